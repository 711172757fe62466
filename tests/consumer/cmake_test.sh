#!/bin/sh
# Somebody else's project finds the installed package with CMake, builds against it and runs.
# Environment: THERMIKA_SOURCE, THERMIKA_BUILD, THERMIKA_VERSION; what CMake itself reads.
. "${0%/*}/install.sh"

major=${THERMIKA_VERSION%%.*}
minor=${THERMIKA_VERSION#*.}
minor=${minor%%.*}
quietly cmake -S "$THERMIKA_SOURCE/tests/consumer" -B "$work/build" \
    -DCMAKE_PREFIX_PATH="$prefix" -DCONSUMER_WANTS="$major.$minor"
quietly cmake --build "$work/build"
printed=$("$work/build/consumer")
[ "$printed" = "$THERMIKA_VERSION: 1 optics, formats in $THERMIKA_DATA_DIR" ] ||
    fail "the consumer printed: $printed"
if [ "$THERMIKA_FETCH" = ON ]; then
    [ "$("$work/build/fetch-consumer")" = incomplete ] || fail 'the fetch library does not answer'
fi

# Without libcurl's headers the library is there all the same; who needs fetch is told.
without_curl() { # without_curl ARGUMENT...
    rm -rf "$work/other"
    cmake -S "$THERMIKA_SOURCE/tests/consumer" -B "$work/other" -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_DISABLE_FIND_PACKAGE_CURL=ON "$@" >"$work/log" 2>&1
}
without_curl || {
    cat "$work/log" >&2
    fail 'the library is not found without libcurl'
}
! cmake --build "$work/other" --target help | grep fetch-consumer || fail 'fetch without libcurl'
if without_curl -DCONSUMER_FETCH=COMPONENTS; then
    fail 'a component that is needed may be missing'
fi
reason='this thermika has no component fetch'
[ "$THERMIKA_FETCH" != ON ] || reason='component fetch needs libcurl'
tr -s '\n ' ' ' <"$work/log" | grep -q "$reason" || {
    cat "$work/log" >&2
    fail 'no reason is given for the missing component'
}

[ -d "$work/tree$THERMIKA_DATA_DIR/cali" ] || fail 'no directory for the cameras'

# The interface may change with the second number: 0.2 is no 0.1, nor 0.1 a 0.2.
others="$major.$((minor + 1)) $((major + 1)).$minor"
[ "$minor" = 0 ] || others="$others $major.$((minor - 1))"
for wanted in $others; do
    if cmake -S "$THERMIKA_SOURCE/tests/consumer" -B "$work/other" \
        -DCMAKE_PREFIX_PATH="$prefix" -DCONSUMER_WANTS="$wanted" >"$work/log" 2>&1; then
        fail "the package passes for version $wanted"
    fi
    grep -q "compatible with requested version \"$wanted\"" "$work/log" || {
        cat "$work/log" >&2
        fail "version $wanted is refused for another reason"
    }
done
