#!/bin/sh
# SourceLists.cmake and RegisteredTests.cmake must notice what is not built although its name stands
# somewhere.
# usage: SourceLists_test.sh PROJECT CMAKE
set -eu
cmake=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/project"
for part in CMakeLists.txt src tests bench fuzz examples; do
    cp -r "$1/$part" "$work/project/"
done
cd "$work/project"

# fails_with MESSAGE OPTION...
fails_with() {
    message=$1
    shift
    if "$cmake" "$@" >"$work/out" 2>&1 || ! grep -q "$message" "$work/out"; then
        cat "$work/out"
        echo "FAILED: expected \"$message\"" >&2
        exit 1
    fi
}
# forgotten FILE SED-SCRIPT LIST: the list changed, the file is missed, the list as it was.
forgotten() {
    cp "$3" "$work/list"
    sed -i "$2" "$3"
    ! cmp -s "$3" "$work/list" || {
        echo "FAILED: nothing to take out of $3 for $1" >&2
        exit 1
    }
    fails_with "$1 is in no CMakeLists.txt" -DROOT="$PWD" -P tests/SourceLists.cmake
    cp "$work/list" "$3"
}

"$cmake" -DROOT="$PWD" -P tests/SourceLists.cmake
forgotten src/sdk/Timer.cpp 's|src/sdk/Timer.cpp|# &|' CMakeLists.txt
forgotten tests/sdk/Timer_test.cpp 's|sdk/Timer_test.cpp|# &|' tests/CMakeLists.txt
forgotten tests/sdk/Timer_test.cpp 's|sdk/Timer_test.cpp|other/&|' tests/CMakeLists.txt
forgotten fuzz/sdk/Logger_fuzz.cpp 's|sdk/Logger\>||' fuzz/CMakeLists.txt
forgotten fuzz/sdk/SimpleXML_fuzz.cpp 's|sdk/SimpleXML\([ )]\)|\1|' fuzz/CMakeLists.txt

echo '// TEST(Timer, isSwitchedOff) {' >>tests/sdk/Timer_test.cpp
fails_with 'Timer_test.cpp switches a test off' -DROOT="$PWD" -P tests/SourceLists.cmake

# What a tests program lists, against the tests as they are written.
cat >a_test.cpp <<'TEXT'
TEST(Timer, runs) {}
TEST_F(Clock,
       isRead) {}
TEXT
printf '#!/bin/sh\nprintf "Timer.\\n  runs\\nClock.\\n  isRead\\n"\n' >program
chmod +x program
"$cmake" -DPROGRAM="$PWD/program" -DSOURCES=a_test.cpp -DFOLDER="$PWD" -P tests/RegisteredTests.cmake
printf '#if 0\nTEST(Clock, isSet) {}\n#endif\n' >>a_test.cpp
fails_with 'Clock.isSet' -DPROGRAM="$PWD/program" -DSOURCES=a_test.cpp -DFOLDER="$PWD" \
    -P tests/RegisteredTests.cmake
: >a_test.cpp
fails_with 'no test found' -DPROGRAM="$PWD/program" -DSOURCES=a_test.cpp -DFOLDER="$PWD" \
    -P tests/RegisteredTests.cmake
