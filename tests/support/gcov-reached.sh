#!/bin/sh
# gcov for gcovr, without the branches that were never come to: the branch or line that never led
# there is told already. Besides, gcov marks what a call may throw through only where it came to the
# call, and the linker keeps one of the many copies of a header's function.
# usage: as gcov
gcov "$@" || exit
find . -maxdepth 1 -name '*.gcov' -exec sed -i '/^branch .* never executed/d' {} +
