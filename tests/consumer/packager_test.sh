#!/bin/sh
# What whoever packages Thermika decides stays decided: a FORTIFY level of its own, shared libraries,
# the cameras' directory whatever the prefix is; and the usual command finds the tests. Who builds all of
# it is told in one error what is missing.
# Environment: THERMIKA_SOURCE; what CMake itself reads.
. "${0%/*}/folder.sh"
# A package's build has flags of its own; what stands below says which are meant.
unset CFLAGS CXXFLAGS CPPFLAGS LDFLAGS
configure() { # configure FOLDER ARGUMENT...
    folder=$work/$1
    shift
    cmake -S "$THERMIKA_SOURCE" -B "$folder" -DTHERMIKA_CLI=OFF -DTHERMIKA_FETCH=OFF \
        -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "cannot be configured: $*"
    }
    commands=$folder/compile_commands.json
    grep -q 'sdk/SimpleXML.cpp' "$commands" || fail 'the library is not compiled'
}

configure own -DCMAKE_CXX_FLAGS='-O2 -D_FORTIFY_SOURCE=1' -DBUILD_SHARED_LIBS=ON
[ "$(grep -o '_FORTIFY_SOURCE=.' "$commands" | sort -u)" = _FORTIFY_SOURCE=1 ] ||
    fail "a packager's own FORTIFY level is replaced"
cmake --build "$folder" --target help >"$work/targets"
grep -q 'libthermika\.so' "$work/targets" || fail 'BUILD_SHARED_LIBS gives no shared library'
grep -qw test "$work/targets" || fail 'there is no target "test"'

# Without one of its own, ours.
configure ours -DCMAKE_CXX_FLAGS=-U_FORTIFY_SOURCE -DCMAKE_INSTALL_PREFIX=/opt/thermika
[ "$(grep -o '_FORTIFY_SOURCE=.' "$commands" | sort -u)" = _FORTIFY_SOURCE=2 ] ||
    fail 'no FORTIFY level is set'
grep -q '"/usr/share/libthermika"' "$folder/generated/sdk/base/BuildConfig.h" ||
    fail 'the directory follows the prefix'
[ ! -e "$folder/man/thermika.1" ] || fail "the companion's manual is there without the companion"
for page in "$folder"/man/*; do
    # The schema lies below the prefix.
    sed 's|/usr/share/thermika|/opt/thermika/share/thermika|' \
        "$THERMIKA_SOURCE/docs/man/${page##*/}" | diff - "$page" || fail "$page names other paths"
done
grep -q '/opt/thermika/share/thermika/imager.xsd' "$folder/man/thermika-files.5" ||
    fail 'the schema is looked for outside the prefix'

# The preset of those who only run the tool; FORTIFY in the flags of the configuration.
configure elsewhere --preset release -DTHERMIKA_DATA_DIR=/srv/cameras \
    -DCMAKE_CXX_FLAGS_RELEASE='-O2 -D_FORTIFY_SOURCE=3'
[ "$(grep -o '_FORTIFY_SOURCE=.' "$commands" | sort -u)" = _FORTIFY_SOURCE=3 ] ||
    fail "a packager's FORTIFY level in the configuration's flags is replaced"
! grep -qe -Werror "$commands" || fail 'a warning stops those who only run the tool'
grep -q '"/srv/cameras"' "$folder/generated/sdk/base/BuildConfig.h" ||
    fail 'THERMIKA_DATA_DIR is not heard'

# lacks PACKAGE DEBIAN-PACKAGE: the one error names it.
lacks() {
    if cmake -S "$THERMIKA_SOURCE" -B "$work/without-$1" -DTHERMIKA_CLI=ON -DTHERMIKA_FETCH=ON \
        -D"CMAKE_DISABLE_FIND_PACKAGE_$1=ON" >"$work/log" 2>&1; then
        fail "it is configured without $1"
    fi
    if [ "$(grep -c '^CMake Error' "$work/log")" != 1 ] ||
        ! tr -s '\n ' ' ' <"$work/log" | grep -q "Debian package $2[ ,]"; then
        cat "$work/log" >&2
        fail "no clear error names what lacks without $1"
    fi
}
lacks CURL libcurl4-openssl-dev
lacks CLI11 libcli11-dev
lacks nlohmann_json nlohmann-json3-dev
lacks LibXml2 libxml2-dev
for page in thermika-genconfig.1 thermika-files.5; do
    grep -q '/srv/cameras/cali' "$folder/man/$page" || fail "$page names another directory"
done
! grep -r /usr/share/libthermika "$folder/man" || fail 'a manual names the default directory'
