#!/bin/sh
# Reads the tool's ELF file: position-independent, everything bound at start and read-only from then
# on, no executable stack, stack protector and fortified calls in place, the driver's functions there.
# usage: hardening_test.sh TOOL
set -eu
tool=$1

fail() {
    echo "FAILED: $1" >&2
    exit 1
}
shows() { # shows WHAT PATTERN READELF-OPTION
    LC_ALL=C readelf -W "$3" "$tool" | grep -Eq "$2" || fail "$1"
}

shows 'not position-independent' 'Type: +DYN' -h
shows 'no read-only relocations' 'GNU_RELRO' -l
shows 'symbols are bound lazily' 'FLAGS.*NOW' -d
shows 'the stack is executable' 'GNU_STACK .* RW +0x' -l
shows 'no stack protector' '__stack_chk_fail' -s
shows 'no fortified calls' '__v?[a-z]+_chk' -s
# Indirect branches land on marked places only.
objdump -d --no-show-raw-insn "$tool" | grep -A1 '<main>:' | grep -q endbr64 ||
    fail 'no control-flow protection'
for symbol in _Z10printUsagePc _ZN3dax13getFolderPathEPcs _ZN3dax5mkDirEPKc; do
    shows "$symbol is not there or not global" "FUNC +GLOBAL +DEFAULT +[0-9]+ $symbol\$" -s
done
