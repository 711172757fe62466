#!/bin/sh
# As a part of another project Thermika gives its library, and changes nothing: no tests, nothing to
# install, no build type, no variable in the host's cache but its own, no warning an error.
# Environment: THERMIKA_SOURCE; what CMake itself reads.
. "${0%/*}/folder.sh"
cat >"$work/CMakeLists.txt" <<TEXT
cmake_minimum_required(VERSION 3.25)
project(host VERSION 9.8.7 LANGUAGES CXX)
enable_testing()
get_cmake_property(before VARIABLES)
if(WITH_THERMIKA)
    add_subdirectory("$THERMIKA_SOURCE" thermika)
    add_executable(consumer "$THERMIKA_SOURCE/tests/consumer/main.cpp")
    target_link_libraries(consumer PRIVATE thermika::thermika)
endif()
get_cmake_property(after VARIABLES)
list(REMOVE_ITEM after \${before} before after)
message(NOTICE "new variables: \${after}")
TEXT
configure() { # configure FOLDER ON-OR-OFF
    cmake -S "$work" -B "$work/$1" -DWITH_THERMIKA="$2" >"$work/$1.log" 2>&1 || {
        cat "$work/$1.log" >&2
        fail 'the host cannot be configured'
    }
    sed -nE 's/^([A-Za-z_0-9-]+):[A-Z]+=(.*)/\1=\2/p' "$work/$1/CMakeCache.txt" |
        grep -vE "^(WITH_THERMIKA|CMAKE_NUMBER_OF_MAKEFILES)" | sed "s|$work/$1|BUILD|" | sort >"$work/$1.cache"
}
configure without OFF
configure with ON
# CMake itself keeps where each project lies.
changed=$(diff "$work/without.cache" "$work/with.cache" |
    grep '^[<>]' | grep -vE '^> (THERMIKA_|thermika_(BINARY|SOURCE)_DIR|thermika_IS_TOP_LEVEL)' ||
    true)
[ -z "$changed" ] || fail "the host's cache changes: $changed"
grep -q '^THERMIKA_' "$work/with.cache" || fail 'Thermika was not there at all'
variables=$(sed -n 's/^new variables: //p' "$work/with.log" | tr ';' '\n' |
    grep -vE '^(THERMIKA_|thermika)' || true)
[ -z "$variables" ] || fail "the host's variables change: $variables"
tests=$(cd "$work/with" && ctest -N | sed -n 's/^Total Tests: //p')
[ "$tests" = 0 ] || fail "the host gets $tests tests"

cmake --build "$work/with" --target consumer >"$work/log" 2>&1 || {
    cat "$work/log" >&2
    fail 'the host cannot be built'
}
printed=$("$work/with/consumer")
[ "$printed" = "$THERMIKA_VERSION: 1 optics, formats in $THERMIKA_DATA_DIR" ] ||
    fail "the consumer printed: $printed"
# The host alone decides what is installed.
DESTDIR=$work/tree cmake --install "$work/with" >"$work/log" 2>&1 || true
[ ! -e "$work/tree" ] || fail "installed: $(find "$work/tree" -type f)"
