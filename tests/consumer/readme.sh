#!/bin/sh
# Runs what README shows about the library, to the letter: it is built and installed below a prefix,
# and a program of somebody else's is built with pkg-config and with CMake, and runs. tools/bare does
# that on machines that have nothing else, because the installation writes outside the prefix too.
# usage: readme.sh [--installed | --commands]
#   --installed  the program alone, with the system's library
#   --commands   only list the commands
set -eu
project=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)

# readme BEGINNING: README's commands that begin so.
readme() {
    sed -n "s|^    \\$ \\($1 \\)|\\1|p" "$project/README.md"
}
# run BEGINNING: each of them, in the working directory.
run() {
    readme "$1" | sed "s|PREFIX|$work/prefix|" >"$work/commands"
    [ -s "$work/commands" ]
    sh -eux "$work/commands"
}
# answers PROGRAM: it uses the library.
answers() {
    "$1" | grep '^[0-9.]*: 1 optics'
}

if [ "${1-}" = --commands ]; then
    readme cmake
    readme c++
    exit
fi
[ -d "${TMPDIR-/tmp}" ] || unset TMPDIR
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ "${1-}" != --installed ]; then
    cd "$project"
    run cmake
    config=$(find "$work/prefix" -name thermika.pc)
    export PKG_CONFIG_PATH="${config%/*}" CMAKE_PREFIX_PATH="$work/prefix"
fi
cd "$work"
cp "$project/tests/consumer/main.cpp" yours.cpp
run c++
answers ./yours

{
    echo 'cmake_minimum_required(VERSION 3.25)'
    echo 'project(yours LANGUAGES CXX)'
    echo 'add_executable(yours yours.cpp)'
    sed -n 's/^    \(find_package(.*\)/\1/p; s/^    \(target_link_libraries(.*\)/\1/p' \
        "$project/README.md"
} >CMakeLists.txt
grep -q thermika::fetch CMakeLists.txt
cmake -G Ninja -B build
cmake --build build
answers build/yours
