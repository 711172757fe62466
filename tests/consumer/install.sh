# Read by the tests here: the same with the build installed in the folder. Sets also `prefix`, for
# the installed tree. It is not where the build was told to install: what is installed must not mind.
. "${0%/*}/folder.sh"

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
