#!/bin/sh
# As a part of another project, added by add_subdirectory() or FetchContent, in a host with static or
# shared libraries, Thermika gives its library, and changes nothing: no tests, nothing to install, no
# build type, no variable of the host but THERMIKA_ ones, no warning an error, no FORTIFY level beside
# the host's, nothing but the library in its `all`.
# Environment: THERMIKA_SOURCE; what CMake itself reads.
. "${0%/*}/folder.sh"
# A package's build has flags of its own; what stands below says which are meant.
unset CFLAGS CXXFLAGS CPPFLAGS LDFLAGS
cat >"$work/CMakeLists.txt" <<TEXT
cmake_minimum_required(VERSION 3.25)
project(host VERSION 9.8.7 LANGUAGES CXX)
enable_testing()
include(FetchContent)
get_cmake_property(before VARIABLES)
foreach(name \${before})
    set(value_of_\${name} "\${\${name}}")
endforeach()
if(ADDED_BY STREQUAL "add_subdirectory")
    add_subdirectory("$THERMIKA_SOURCE" thermika)
elseif(ADDED_BY STREQUAL "FetchContent")
    add_compile_options(-O2 -D_FORTIFY_SOURCE=3)
    FetchContent_Declare(thermika SOURCE_DIR "$THERMIKA_SOURCE")
    FetchContent_MakeAvailable(thermika)
endif()
get_cmake_property(after VARIABLES)
list(FILTER after EXCLUDE REGEX "^(value_of_.*|before|name|CMAKE_MATCH_.*)\$")
foreach(name \${after})
    if(NOT "\${\${name}}" STREQUAL "\${value_of_\${name}}")
        message(NOTICE "changed variable: \${name}")
    endif()
endforeach()
if(ADDED_BY)
    add_executable(consumer "$THERMIKA_SOURCE/tests/consumer/main.cpp")
    target_link_libraries(consumer PRIVATE thermika::thermika)
endif()
TEXT
configure() { # configure FOLDER ARGUMENT...
    folder=$1
    shift
    cmake -S "$work" -B "$work/$folder" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@" \
        >"$work/$folder.log" 2>&1 || {
        cat "$work/$folder.log" >&2
        fail "the host cannot be configured: $*"
    }
    sed -nE 's/^([A-Za-z_0-9-]+):[A-Z]+=(.*)/\1=\2/p' "$work/$folder/CMakeCache.txt" |
        grep -vE "^(ADDED_BY|BUILD_SHARED_LIBS|CMAKE_NUMBER_OF_MAKEFILES)" |
        sed "s|$work/$folder|BUILD|" | sort >"$work/$folder.cache"
}
# CMake itself keeps where each project lies, and what was fetched from where.
own='(THERMIKA_|thermika_(BINARY|SOURCE)_DIR|thermika_IS_TOP_LEVEL|FETCHCONTENT_)'
changes_nothing() { # changes_nothing FOLDER
    changed=$(diff "$work/without.cache" "$work/$1.cache" | grep '^[<>]' | grep -vE "^> $own" ||
        true)
    [ -z "$changed" ] || fail "the host's cache changes: $changed"
    for option in CLI FETCH INSTALL TESTS WARNINGS_AS_ERRORS; do
        grep -qx "THERMIKA_$option=OFF" "$work/$1.cache" || fail "THERMIKA_$option is not OFF"
    done
    changed=$(sed -n 's/^changed variable: //p' "$work/$1.log" |
        grep -vE "^(THERMIKA_|thermika_|FETCHCONTENT_|FetchContent_|__cmake_)" || true)
    [ -z "$changed" ] || fail "the host's variables change: $changed"
    tests=$(cd "$work/$1" && ctest -N | sed -n 's/^Total Tests: //p')
    [ "$tests" = 0 ] || fail "the host gets $tests tests"
    commands=$work/$1/compile_commands.json
    grep -q 'sdk/SimpleXML\.cpp' "$commands" || fail 'the library is not compiled'
    ! grep -qe -Werror "$commands" || fail 'warnings are errors'
}
built() { # built FOLDER: the libraries and programs in it
    (cd "$work/$1" && find . -path '*/CMakeFiles' -prune -o -type f \
        \( -name '*.a' -o -name '*.so*' -o -perm /111 \) -print) | LC_ALL=C sort | xargs
}
builds() { # builds FOLDER ALL: the libraries and programs of the host's `all`
    cmake --build "$work/$1" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail 'the host cannot be built'
    }
    [ "$(built "$1")" = "$2" ] || fail "the host gets also: $(built "$1")"
    printed=$("$work/$1/consumer")
    [ "$printed" = "$THERMIKA_VERSION: 1 optics, formats in $THERMIKA_DATA_DIR" ] ||
        fail "the consumer printed: $printed"
}
configure without
configure added -DADDED_BY=add_subdirectory
changes_nothing added
! grep -q _FORTIFY_SOURCE "$work/added/compile_commands.json" ||
    fail 'FORTIFY is asked for in code that is not optimised'
builds added './consumer ./thermika/libthermika.a'
# The host alone decides what is installed.
DESTDIR=$work/tree cmake --install "$work/added" >"$work/log" 2>&1 || true
[ ! -e "$work/tree" ] || fail "installed: $(find "$work/tree" -type f)"

configure shared -DADDED_BY=FetchContent -DBUILD_SHARED_LIBS=ON
changes_nothing shared
[ "$(grep -o '_FORTIFY_SOURCE=.' "$work/shared/compile_commands.json" | sort -u)" = \
    _FORTIFY_SOURCE=3 ] || fail "the host's FORTIFY level is not the only one"
builds shared "./_deps/thermika-build/libthermika.so.$THERMIKA_VERSION ./consumer"

# A host that wants all of it installed gets a tool that finds its library wherever it lies, unless
# nothing is to be written into it.
installs() { # installs FOLDER ARGUMENT...
    tree=$work/$1
    shift
    {
        cmake -S "$work" -B "$work/shared" -DTHERMIKA_INSTALL=ON "$@" &&
            cmake --build "$work/shared" &&
            DESTDIR=$tree cmake --install "$work/shared" --prefix /opt/own
    } >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail 'the host cannot install it'
    }
    tool=$tree/opt/own/bin/thermika-genconfig
}
installs tree
"$tool" -d 14080045 | grep -q '<serial>14080045</serial>' || fail 'the installed tool does not run'
installs bare -DCMAKE_SKIP_INSTALL_RPATH=ON
LC_ALL=C readelf -d "$tool" >"$work/dynamic"
grep -q 'NEEDED.*libthermika\.so' "$work/dynamic" || fail 'the tool is not linked with the library'
! grep -E 'RPATH|RUNPATH' "$work/dynamic" || fail 'the tool names a directory of libraries'
