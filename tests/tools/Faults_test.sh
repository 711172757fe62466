#!/bin/sh
# tools/faults must fail where it shows nothing, and where the tool or the companion has a weakness that
# it looks for.
# usage: Faults_test.sh PROJECT STAND-IN COMPANION-STAND-IN USE HOST
set -eu
project=$1 use=$4 host=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for weakness in unmarked silent fragile forgiving few; do
    cp "$2" "$work/$weakness"
done
for weakness in unmarked cutting littering claiming mute crashing few; do
    cp "$3" "$work/companion-$weakness"
done

# fails_with MESSAGE TOOL USE OPTION...
fails_with() {
    message=$1 tool=$2 used=$3
    shift 3
    status=0
    "$project/tools/faults" "$tool" "$used" "$companion" "$host" "$@" >"$work/out" 2>&1 || status=$?
    if [ "$status" != 1 ] || ! grep -q -e "$message" "$work/out"; then
        cat "$work/out"
        echo "FAILED: status $status, expected 1 with \"$message\"" >&2
        exit 1
    fi
}

companion=$work/companion-few
# One fault of five of the tool, of six of the companion, reaches each weakness many times.
fails_with 'never calls rt_sigaction(SIGPIPE' "$work/unmarked" "$use" --only tool
fails_with 'status 255 without a message' "$work/silent" "$use" --only tool --thin 5
fails_with 'status 255 after a failure that changes nothing' "$work/fragile" "$use" --only tool \
    --thin 5
fails_with 'status 0, 0 bytes' "$work/forgiving" "$use" --only tool --thin 5
fails_with 'the tool offers [0-9]* faults, at least [1-9][0-9]* are expected, and 0 were tried' \
    "$work/few" "$use" --only tool --thin 100000
fails_with 'the library offers .*, and 0 were tried' "$work/few" "$use" --only library --thin 100000

# companion_fails_with MESSAGE WEAKNESS OPTION...
companion_fails_with() {
    companion=$work/companion-$2
    message=$1
    shift 2
    fails_with "$message" "$work/few" "$use" --only companion "$@"
}

companion_fails_with 'never calls rt_sigaction(SIGPIPE' unmarked
companion_fails_with 'is neither old nor new' cutting
companion_fails_with 'thermika-fetch-1.part is left' littering
companion_fails_with 'status 0 with' claiming
companion_fails_with 'status 3: $' mute
companion_fails_with 'status -6' crashing
companion_fails_with 'the companion offers [0-9]* faults, at least [1-9][0-9]* are expected, and 0' \
    few --thin 100000
