#!/bin/sh
# What ./dev itself answers, apart from building: its list of verbs, an unknown verb, and missing
# packages on a machine where it may not install them.
# usage: door_test.sh PROJECT
set -eu
dev=$1/dev
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

verbs=$("$dev") || fail 'without arguments it does not succeed'
for verb in run cli demo test asan tidy analyze valgrind format coverage bench faults mutate fuzz; do
    echo "$verbs" | grep -q "^  $verb " || fail "$verb is not listed"
done

status=0
"$dev" no-such-verb >"$work/out" 2>"$work/err" || status=$?
[ "$status" = 64 ] || fail "an unknown verb answers $status"
[ ! -s "$work/out" ] || fail 'an unknown verb writes to standard output'
grep -q '^./dev: no such verb: no-such-verb$' "$work/err" || fail 'an unknown verb is not named'

# Neither root nor sudo, and no package is there.
mkdir "$work/bin"
for program in dpkg-query sudo; do
    printf '#!/bin/sh\nexit 1\n' >"$work/bin/$program"
done
printf '#!/bin/sh\necho 1000\n' >"$work/bin/id"
chmod +x "$work"/bin/*
status=0
PATH=$work/bin:$PATH "$dev" run -d5 >"$work/out" 2>"$work/err" || status=$?
[ "$status" = 69 ] || fail "missing packages answer $status"
[ "$(wc -l <"$work/err")" = 1 ] || fail 'missing packages are not named in one line'
grep -q 'packages: cmake ninja-build g++$' "$work/err" || fail 'the packages are not named'
[ ! -s "$work/out" ] || fail 'missing packages write to standard output'
