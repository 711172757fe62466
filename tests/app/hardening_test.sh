#!/bin/sh
# Reads the tool's ELF file: position-independent, everything bound at start and read-only from then
# on, no executable stack, the driver's functions there. Stack protector, fortified calls and marked
# branch targets are looked for in what was compiled here: a static tool holds the C library's as
# well.
# usage: hardening_test.sh TOOL SHALL-BE-STATIC HOW-IT-IS-LINKED PROCESSOR OBJECT-OR-ARCHIVE...
set -eu
export LC_ALL=C
tool=$1
shall_be_static=$2
linking=$3
processor=$4
shift 4

fail() {
    echo "FAILED: $1" >&2
    exit 1
}
shows() { # shows WHAT PATTERN READELF-OPTION
    readelf -W "$3" "$tool" | grep -Eq "$2" || fail "$1"
}

if [ "$shall_be_static" = ON ]; then
    [ -n "$linking" ] || fail 'not static: no static C++ library, and no THERMIKA_STATIC=OFF'
    ! readelf -W -l "$tool" | grep -q ' INTERP ' || fail 'not static: it names a loader'
fi
# Only some machines mark where indirect branches may land; these have the start-up code for a static
# program at any address, too, which others lack.
case $processor in
x86_64 | i?86) mark='x86 feature: IBT, SHSTK' ;;
aarch64) mark='AArch64 feature: BTI, PAC' ;;
*) mark= ;;
esac
[ "$linking$mark" = -static ] || shows 'not position-independent' 'Type: +DYN' -h
shows 'no read-only relocations' 'GNU_RELRO' -l
[ "$linking" = -static ] || shows 'symbols are bound lazily' 'FLAGS.*NOW' -d
shows 'the stack is executable' 'GNU_STACK .* RW +0x' -l
for symbol in _Z10printUsagePc _ZN3dax13getFolderPathEPcs _ZN3dax5mkDirEPKc; do
    shows "$symbol is not there or not global" "FUNC +GLOBAL +DEFAULT +[0-9]+ $symbol\$" -s
done

[ $# -gt 0 ] || fail 'no object to look into'
# Every single object says that it is marked.
for compiled in "$@"; do
    calls=$(readelf -sW "$compiled")
    echo "$calls" | grep -Eq 'UND __stack_chk_fail' || fail "no stack protector in $compiled"
    echo "$calls" | grep -Eq 'UND __[a-z]+_chk$' || fail "no fortified calls in $compiled"
    [ -n "$mark" ] || continue
    objects=$(readelf -h "$compiled" | grep -c '^ELF Header')
    marked=$(readelf -nW "$compiled" | grep -c "$mark") || true
    [ "$marked" = "$objects" ] ||
        fail "only $marked of $objects objects in $compiled have control-flow protection"
done
