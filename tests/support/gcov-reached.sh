#!/bin/sh
# gcov for gcovr, without the branches that were never come to: the branch or line that never led
# there is told already. Besides, gcov marks what a call may throw through only where it came to the
# call, and the linker keeps one of the many copies of a header's function. What stands behind a call
# that only ever threw stays, since no other branch tells that it was never come to.
# usage: as gcov

# What a test includes of the system's headers is a hundred times as much as our own sources.
root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
gcov --relative-only --source-prefix "$root" "$@" || exit
for report in *.gcov; do
    [ -e "$report" ] || continue
    awk '
        # A call gives two branches: on, and out of it by an exception.
        /^branch .*never executed/ { if (!only_threw) next }
        /^branch/ {
            if (was_never_left && /\(throw\)/ && !/taken 0/) only_threw = 1
            was_never_left = /taken 0%? \(fallthrough\)/
        }
        !/^(branch|call)/ { only_threw = 0; was_never_left = 0 }
        { print }' "$report" >"$report.reached"
    mv "$report.reached" "$report"
done
