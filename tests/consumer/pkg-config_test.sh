#!/bin/sh
# Somebody else's program builds with what pkg-config tells about the installed package, wherever
# the tree was moved; linked statically as well, by the C compiler too.
# Environment: as cmake_test.sh, and CXX, CXXFLAGS.
. "${0%/*}/install.sh"

export PKG_CONFIG_PATH="$libdir/pkgconfig" LD_LIBRARY_PATH="$libdir"
main=$THERMIKA_SOURCE/tests/consumer/main.cpp
expected="$THERMIKA_VERSION: 1 optics, formats in $THERMIKA_DATA_DIR"
[ "$(pkg-config --modversion thermika)" = "$THERMIKA_VERSION" ] || fail 'another version'

# Word splitting is wanted: lists of flags.
# shellcheck disable=SC2086
build() { # build NAME COMMAND...
    name=$1
    shift
    quietly "$@"
    printed=$("$work/$name")
    [ "$printed" = "$expected" ] || fail "$name printed: $printed"
}
# shellcheck disable=SC2046,SC2086
{
    build consumer "$CXX" $CXXFLAGS -std=c++17 "$main" -o "$work/consumer" \
        $(pkg-config --cflags --libs thermika)
    quietly "$CXX" $CXXFLAGS -std=c++17 -c "$main" -o "$work/main.o" \
        $(pkg-config --cflags thermika)
    build linked-by-c "${CC:-cc}" -static "$work/main.o" -o "$work/linked-by-c" \
        $(pkg-config --static --libs thermika)
    ! readelf -d "$work/linked-by-c" | grep NEEDED || fail 'linked-by-c is not linked statically'
    if [ "$THERMIKA_FETCH" = ON ]; then
        expected=incomplete
        build fetch-consumer "$CXX" $CXXFLAGS -std=c++17 "${main%/*}/fetch.cpp" \
            -o "$work/fetch-consumer" $(pkg-config --cflags --libs thermika-fetch)
    fi
}

# A directory of libraries elsewhere stays where it is.
quietly cmake -S "$THERMIKA_SOURCE" -B "$work/elsewhere" -DCMAKE_INSTALL_LIBDIR=/opt/own/lib64 \
    -DTHERMIKA_CLI=OFF -DTHERMIKA_FETCH=OFF
PKG_CONFIG_PATH=$work/elsewhere
[ "$(pkg-config --variable=libdir thermika)" = /opt/own/lib64 ] ||
    fail 'an absolute directory of libraries is changed'
[ "$(pkg-config --variable=includedir thermika)" = /usr/local/include/thermika ] ||
    fail 'the headers are looked for elsewhere'
