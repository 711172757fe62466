#!/bin/sh
# The shared library exports exactly what cmake/exported-symbols lists. A new name is written there
# by hand; one that is gone breaks programs that exist.
# usage: exports_test.sh LIBRARY LIST
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

nm -DC --defined-only "$1" | sed -E 's/^[0-9a-f]+ . //' | LC_ALL=C sort -u >"$work/exported"
diff -u "$2" "$work/exported" || {
    echo 'FAILED: "-" is listed in cmake/exported-symbols, "+" is exported' >&2
    exit 1
}
LC_ALL=C readelf -d "$1" | grep -q 'SONAME.*\[libthermika\.so\.0\]' || {
    echo 'FAILED: its SONAME is another' >&2
    exit 1
}
