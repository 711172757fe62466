#!/bin/sh
# What ./dev itself answers, apart from building: its list of verbs, an unknown verb, missing
# packages on a machine where it may not install them, and places where it cannot build or test.
# usage: door_test.sh PROJECT
set -eu
umask 022 # another user reads what lies here
project=$1
dev=$project/dev
[ -d "${TMPDIR-/tmp}" ] || unset TMPDIR
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

# answers STATUS COMMAND...: runs it, with its output in $work/out and $work/err.
answers() {
    expected=$1
    shift
    status=0
    "$@" >"$work/out" 2>"$work/err" || status=$?
    [ "$status" = "$expected" ] || {
        cat "$work/err" >&2
        fail "$* answers $status, not $expected"
    }
}

says_one_line() {
    [ "$(wc -l <"$work/err")" = 1 ] || fail "$1: not one line on standard error"
    [ ! -s "$work/out" ] || fail "$1: something on standard output"
}

answers 0 "$dev"
cp "$work/out" "$work/usage"
# shellcheck disable=SC2016
sed -n '/^case $verb in/,/^esac/s/^\([a-z]*\))$/\1/p' "$dev" >"$work/verbs"
grep -qx test "$work/verbs" || fail 'no verb found in the script'
while read -r verb; do
    grep -q "^  $verb " "$work/usage" || fail "$verb is not listed"
done <"$work/verbs"
for form in -h --help help; do
    answers 0 "$dev" $form
    cmp "$work/usage" "$work/out" || fail "$form does not print the list of verbs"
done
ln -s "$dev" "$work/door"
ln -s door "$work/door-to-the-door"
(cd / && answers 0 "$work/door-to-the-door" help)
cmp "$work/usage" "$work/out" || fail 'a symbolic link to it does not work'

answers 64 "$dev" no-such-verb
[ ! -s "$work/out" ] || fail 'an unknown verb writes to standard output'
grep -q '^./dev: no such verb: no-such-verb$' "$work/err" || fail 'an unknown verb is not named'

# Neither root nor sudo, and no package is there.
mkdir "$work/bin"
for program in dpkg-query sudo; do
    printf '#!/bin/sh\nexit 1\n' >"$work/bin/$program"
done
printf '#!/bin/sh\necho 1000\n' >"$work/bin/id"
chmod +x "$work"/bin/*
install='apt-get update && apt-get install -y --no-install-recommends'
for arguments in 'run -d5' demo test; do
    # shellcheck disable=SC2086
    answers 69 env PATH="$work/bin:$PATH" "$dev" $arguments
    says_one_line "missing packages for $arguments"
    grep -q "as root, run: $install cmake ninja-build g++" "$work/err" ||
        fail "$arguments: no line to copy that installs the packages"
done
answers 69 env PATH="$work/bin:$PATH" "$dev" run
grep -q " cmake ninja-build g++\$" "$work/err" || fail 'the tool alone takes more than a compiler'
answers 69 env PATH="$work/bin:$PATH" "$dev" demo
grep -q ' wget' "$work/err" || fail 'the packages of the demonstration are not named at once'

# Another user's build folder, seen by somebody whom file modes bind.
mkdir -p "$work/clone/build"
cp "$dev" "$work/clone/dev"
chmod 755 "$work" "$work/clone"
chmod 555 "$work/clone/build"
as_somebody=
[ "$(id -u)" != 0 ] || as_somebody='setpriv --reuid=65534 --regid=65534 --clear-groups'
# shellcheck disable=SC2086
answers 70 $as_somebody "$work/clone/dev" run
says_one_line 'a build folder of another user'
grep -q "$work/clone/build, which belongs to $(id -un)" "$work/err" ||
    fail "a build folder of another user is not named with its owner"

# A system that gives nobody namespaces.
# shellcheck disable=SC2016
answers 71 unshare --user --map-root-user sh -c '
    for kind in mnt user; do echo 0 >/proc/sys/user/max_${kind}_namespaces; done
    exec "$1" /no/tool' sh "$project/examples/demo.sh"
says_one_line 'a system without namespaces'
grep -q 'does not allow private mount and network namespaces' "$work/err" ||
    fail 'a system without namespaces is not named as such'
