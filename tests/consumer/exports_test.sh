#!/bin/sh
# The shared library exports exactly what cmake/exported-symbols lists. A new name is written there
# by hand; one that is gone breaks programs that exist. Its SONAME and the packages' names have the
# number of the interface that programs were built with.
# usage: exports_test.sh LIBRARY PROJECT ABI
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

nm -DC --defined-only "$1" | sed -E 's/^[0-9a-f]+ . //' | LC_ALL=C sort -u >"$work/exported"
diff -u "$2/cmake/exported-symbols" "$work/exported" || {
    echo 'FAILED: "-" is listed in cmake/exported-symbols, "+" is exported' >&2
    exit 1
}
LC_ALL=C readelf -d "$1" | grep -q "SONAME.*\[libthermika\.so\.$3\]" || {
    echo 'FAILED: its SONAME is another' >&2
    exit 1
}
debian=$2/packaging/debian
[ -d "$debian" ] || debian=$2/debian # in a source package
for file in "$debian/libthermika$3.install" "$2/packaging/rpm/thermika.rpm.in"; do
    grep -q "/libthermika\.so\.$3\*\$" "$file" || {
        echo "FAILED: $file does not install libthermika.so.$3" >&2
        exit 1
    }
done
grep -qx "Package: libthermika$3" "$debian/control" || {
    echo "FAILED: no Debian package libthermika$3" >&2
    exit 1
}
