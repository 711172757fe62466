# Read by the tests here: a folder of their own with the build installed in it, and how they fail.
# Sets `work`, and `prefix` for the installed tree. It is not where the build was told to install:
# what is installed must not mind.
set -eu
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $1" >&2
    exit 1
}
# Runs a command whose output matters only when it fails.
quietly() {
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "$*"
    }
}

DESTDIR=$work/tree quietly cmake --install "$THERMIKA_BUILD" --prefix /usr
prefix=$work/tree/usr
pc=$(find "$prefix" -name thermika.pc)
libdir=${pc%/pkgconfig/thermika.pc}
