#!/bin/sh
# Reads the tool's ELF file: position-independent, everything bound at start and read-only from then
# on, no executable stack, stack protector and fortified calls in place, the driver's functions there.
# usage: hardening_test.sh TOOL HOW-IT-IS-LINKED PROCESSOR
set -eu
tool=$1
linking=$2
processor=$3

fail() {
    echo "FAILED: $1" >&2
    exit 1
}
shows() { # shows WHAT PATTERN READELF-OPTION
    LC_ALL=C readelf -W "$3" "$tool" | grep -Eq "$2" || fail "$1"
}

# Not every machine has the start-up code for a static program at any address.
[ "$linking" = -static ] || shows 'not position-independent' 'Type: +DYN' -h
shows 'no read-only relocations' 'GNU_RELRO' -l
[ "$linking" = -static ] || shows 'symbols are bound lazily' 'FLAGS.*NOW' -d
shows 'the stack is executable' 'GNU_STACK .* RW +0x' -l
shows 'no stack protector' '__stack_chk_fail' -s
shows 'no fortified calls' '__v?[a-z]+_chk' -s
# Indirect branches land on marked places only.
case $processor in
x86_64 | i?86) mark='endbr(64|32)' ;;
aarch64) mark='(paciasp|bti)' ;;
*) mark= ;;
esac
if [ -n "$mark" ]; then
    "${OBJDUMP:-objdump}" -d --no-show-raw-insn "$tool" | grep -A1 '<main>:' | grep -Eq "$mark" ||
        fail 'no control-flow protection'
fi
for symbol in _Z10printUsagePc _ZN3dax13getFolderPathEPcs _ZN3dax5mkDirEPKc; do
    shows "$symbol is not there or not global" "FUNC +GLOBAL +DEFAULT +[0-9]+ $symbol\$" -s
done
