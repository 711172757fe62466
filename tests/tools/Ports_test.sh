#!/bin/sh
# tools/ports-left-out must notice a line of its list that gives no reason, leaves out too much or
# nothing, and leave out what the list says.
# usage: Ports_test.sh PROJECT
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/tools" "$work/bin"
cp "$1/tools/ports-left-out" "$work/tools"
printf '#!/bin/sh\necho "  Test  #1: Clock.isRead"\necho "  Test #12: Timer.runs"\n' >"$work/bin/ctest"
chmod +x "$work/bin/ctest"

# answers STATUS TEXT LIST ARGUMENT...
answers() {
    expected=$1
    text=$2
    printf '# why\n%s\n' "$3" >"$work/tools/ports-excluded"
    shift 3
    status=0
    PATH=$work/bin:$PATH "$work/tools/ports-left-out" "$@" >"$work/out" 2>&1 || status=$?
    if [ "$status" != "$expected" ] || ! grep -qF -e "$text" "$work/out"; then
        cat "$work/out"
        echo "FAILED: status $status, expected $expected with \"$text\"" >&2
        exit 1
    fi
}

both='all Clock\. # has none
emulated Timer\.(runs|ends) # too slow'
answers 0 '^(Clock\.|Timer\.(runs|ends))' "$both" arm64 "$work"
answers 0 '^(Clock\.)' "$both" i386 "$work"
answers 1 '2:all Clock\.' 'all Clock\.' arm64 "$work"
answers 1 '2:all Clock\.' 'all Clock\. # ' arm64 "$work"
answers 1 '2:emulated C # slow' 'emulated C # slow' arm64 "$work"
answers 1 '2:s391x Clock\. # slow' 's391x Clock\. # slow' arm64 "$work"
answers 1 'no test that begins with Clock\.isSet' 'all Clock\.isSet # slow' arm64 "$work"
answers 0 '^(Clock\.isSet)' 'all Clock\.isSet # slow' riscv64 "$work" --part
printf '#!/bin/sh\n' >"$work/bin/ctest"
answers 1 'no tests in' "$both" arm64 "$work"
