#!/bin/sh
# hardening_test.sh must notice each protection that is missing in what was compiled here, although
# the C library in the same static program has it, and a tool that is not linked as it should be.
# usage: Hardening_test.sh PROJECT COMPILER
set -eu
check=$1/tests/app/hardening_test.sh
compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/tool.cpp" <<'TEXT'
#include <unistd.h>
#include <cstdio>
#include <cstring>
void printUsage(char* program) { std::printf("%s\n", program); }
namespace dax {
char* getFolderPath(char* buffer, short length) { return getcwd(buffer, length); }
int mkDir(const char* path) {
    char copy[64];
    std::strcpy(copy, path);
    return std::printf("%s\n", copy);
}
}
int main(int argc, char** argv) {
    char folder[100];
    printUsage(argv[0]);
    dax::getFolderPath(folder, static_cast<short>(argc));
    return dax::mkDir(folder);
}
TEXT

# check_with COMPILER-OPTION...: builds with all protections, then with the options given, and links
# with $link.
check_with() {
    # shellcheck disable=SC2086
    "$compiler" -O2 -fPIE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong \
        $marks "$@" -c "$work/tool.cpp" -o "$work/tool.o"
    "$compiler" "$link" -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack "$work/tool.o" \
        -o "$work/tool"
    status=0
    sh "$check" "$work/tool" "$wanted" "$linking" "$processor" "$work/tool.o" \
        >"$work/out" 2>&1 || status=$?
}
finds() { # finds WHAT COMPILER-OPTION...
    what=$1
    shift
    check_with "$@"
    if [ "$status" != 1 ] || ! grep -q "$what" "$work/out"; then
        cat "$work/out"
        echo "FAILED: status $status, expected 1 with \"$what\"" >&2
        exit 1
    fi
}
is_content() {
    check_with
    [ "$status" = 0 ] || {
        cat "$work/out"
        echo "FAILED: with all protections and $link it is not content" >&2
        exit 1
    }
}

marks='' none=''
processor=$("$compiler" -dumpmachine)
processor=${processor%%-*}
case $processor in
x86_64) marks=-fcf-protection=full none=-fcf-protection=none ;;
aarch64) marks=-mbranch-protection=standard none=-mbranch-protection=none ;;
esac
wanted=ON link=-static-pie linking=-static-pie
is_content
finds 'no stack protector' -fno-stack-protector
finds 'no fortified calls' -U_FORTIFY_SOURCE
[ -z "$marks" ] || finds 'control-flow protection' $none

link=-pie
finds 'names a loader'
linking=
finds 'no static C++ library'
wanted=OFF
is_content
wanted=ON link=-static linking=-static
[ -z "$marks" ] || finds 'not position-independent'
