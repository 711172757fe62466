#!/bin/sh
# Each installed header compiles alone and twice, without a warning, as C++17, 20 and 23, with the
# compiler of this build (g++ in the dev preset, clang++ in the asan preset); it defines no macro and
# brings no header along that is not public itself.
# Environment: as cmake_test.sh, and CXX.
. "${0%/*}/install.sh"

include=$prefix/include/thermika
public='imgproc/Cali.h
sdk/IRCalibrationManager.h
sdk/IRLogger.h
sdk/Logger.h
sdk/SimpleXML.h
sdk/StringHelpers.h
sdk/Timer.h
sdk/Version.h'
[ "$THERMIKA_FETCH" != ON ] || public="fetch/Fetch.h
$public"
found=$(cd "$include" && find . -type f | sed 's|^\./||' | LC_ALL=C sort)
[ "$found" = "$public" ] || fail "other headers are installed: $found"

for header in $public; do
    printf '#include <%s>\n#include <%s>\n' "$header" "$header" >"$work/alone.cpp"
    for standard in 17 2a 2b; do
        quietly "$CXX" -std=c++$standard -I"$include" -Wall -Wextra -Wpedantic \
            -Wconversion -Wshadow -Wold-style-cast -Werror -fsyntax-only "$work/alone.cpp"
    done
    "$CXX" -std=c++17 -I"$include" -E -dD "$work/alone.cpp" >"$work/expanded"
    # Line markers tell which file the lines after them come from.
    awk -v ours="$include/" '
        /^# [0-9]+ "/ { own = index($3, "\"" ours) == 1; next }
        own && /^#(define|undef)/ { print; found = 1 }
        own { lines++ }
        END { exit found || lines == 0 }' "$work/expanded" || fail "$header defines macros"
done
