#!/bin/sh
# The demonstration, whole: the document alone on standard output, the download and the copy of the
# camera's files on standard error, line by line.
# With THERMIKA, the companion's executable, also the session of somebody who has it.
# usage: demo_test.sh PROJECT TOOL FETCH HOST [THERMIKA]
set -eu
demo=$1/examples/demo.sh
tool=$2 fetch=$3 host=$4 thermika=${5-}
[ -d "${TMPDIR-/tmp}" ] || unset TMPDIR
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

"$demo" "$tool" >"$work/alone" 2>"$work/err" || fail "without the download it answers $?"
[ "$(wc -l <"$work/err")" = 1 ] || fail 'without the download it says more than one line'
# From below /tmp, which the demonstration covers.
(cd "$work" && exec "$demo" "$tool" "$fetch" "$host") >"$work/out" 2>"$work/err" || {
    cat "$work/err" >&2
    fail 'it does not succeed'
}
cmp "$work/alone" "$work/out" || fail 'the download writes to standard output'
grep -q '<serial>14080045</serial>' "$work/out" || fail 'the document names another camera'

cat >"$work/expected" <<TEXT
A camera on the bus: 1-0:1.0 1-1 1-1:1.0 1-2 1-2:1.0 usb1

Downloading the camera's files from http://$host, which is this machine here:
missing before:
Cali-14080045.xml
INFO [IRCalibrationManager:#] @ #s :All files installed.
answer: yes
missing afterwards: nothing
files now: 41

Copying them from that folder:
missing before:
Cali-14080045.xml
find /usr/share/downloaded -name Cali-14080045* -exec cp "{}" /usr/share/copied \\; -o -name Kennlinie-14080045* -exec cp "{}" /usr/share/copied \\; 2> /dev/null
answer: yes
missing afterwards: nothing
files now: 41
TEXT
sed 's/:[0-9]*\] @ [^ ]*s :/:#] @ #s :/' "$work/err" | diff "$work/expected" - || fail 'it says something else'

[ -n "$thermika" ] || exit 0
(cd "$work" && exec "$demo" "$tool" "$fetch" "$host" "$thermika") >"$work/out" 2>"$work/err" || {
    cat "$work/err" >&2
    fail 'with the companion it does not succeed'
}
cmp "$work/alone" "$work/out" || fail 'the companion writes to standard output'
# How tables are laid out is the companion's own affair; what they say is compared here.
while read -r line; do
    sed 's/^ *//' "$work/err" | tr -s ' ' | grep -qFx -- "$line" || {
        cat "$work/err" >&2
        fail "the session lacks the line: $line"
    }
done <<'TEXT'
$ thermika cameras
14080045 1-2 Thermal camera 40 of 41 files not present
$ thermika fetch
40 files fetched, 1 there already
$ thermika files
30 present Cali-14080045-18-T18 HT-M20-100-27.dat
$ thermika optics
18 T18 HT 450..1500 450..1500 0 complete 27 80
$ thermika config -o camera.xml
wrote camera.xml
$ thermika validate camera.xml
camera.xml: nothing is wrong with it
TEXT
[ "$(grep -c '^fetched ' "$work/err")" = 40 ] || fail 'not 40 files were fetched, a line each'
