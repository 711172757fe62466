#!/bin/sh
# gcov-reached.sh must keep a branch behind a call that only ever threw, and drop one behind a
# condition that never led there, which is told at the condition.
# usage: GcovReached_test.sh PROJECT
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cat >example.cpp <<'TEXT'
bool isThrown(int number) {
    if (number > 0) throw number;
    return false;
}
int main(int argc, char**) {
    try {
        if (isThrown(argc)) return 1;
    } catch (int) {
    }
    return argc > 1 && isThrown(argc) ? 1 : 0;
}
TEXT
g++ --coverage -O0 -c example.cpp -o example.o
g++ --coverage example.o -o example
./example
# branches LINE: how many of them are reported, executed or not.
branches() {
    awk -F: -v line="$1" '/^[^:]*:[ 0-9]*:/ { at = $2 + 0 } /^branch/ && at == line { count++ }
        END { print count + 0 }' example.cpp.gcov
}
gcov -b -c example.gcda >/dev/null
all=$(branches 10)
if [ "$(branches 7)" != 4 ] || [ "$all" -le 2 ]; then
    cat example.cpp.gcov
    echo 'FAILED: gcov itself reports other branches' >&2
    exit 1
fi
sh "$1/tests/support/gcov-reached.sh" -b -c example.gcda >/dev/null
if [ "$(branches 7)" != 4 ] || [ "$(branches 10)" -ge "$all" ]; then
    cat example.cpp.gcov
    echo 'FAILED: a branch is hidden, or none is dropped' >&2
    exit 1
fi
