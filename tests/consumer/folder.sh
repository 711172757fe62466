# Read by the tests here: a folder of their own, which is gone at the end, and how they fail.
# Sets `work`.
set -eu
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $1" >&2
    exit 1
}
