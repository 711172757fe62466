#!/bin/sh
# What builds packages, tries other machines and compares interfaces must not succeed when the
# programs that it runs did nothing at all.
# usage: Shipping_test.sh PROJECT
set -eu
project=$1
[ -d "${TMPDIR-/tmp}" ] || unset TMPDIR
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/project"
cp -r "$project/tools" "$project/packaging" "$project/examples" "$project/CMakeLists.txt" "$work/project"

# stand_in NAME...: succeed, and do nothing.
stand_in() {
    for name in "$@"; do
        printf '#!/bin/sh\nexit 0\n' >"$work/bin/$name"
        chmod +x "$work/bin/$name"
    done
}
# fails_with MESSAGE COMMAND...
fails_with() {
    message=$1
    shift
    status=0
    (cd "$work/project" && PATH=$work/bin:$PATH "$@") >"$work/out" 2>&1 || status=$?
    if [ "$status" = 0 ] || ! grep -q -e "$message" "$work/out"; then
        cat "$work/out" >&2
        echo "FAILED: status $status of $*, expected a failure with \"$message\"" >&2
        exit 1
    fi
}

# succeeds_with MESSAGE COMMAND...
succeeds_with() {
    message=$1
    shift
    status=0
    (cd "$work/project" && PATH=$work/bin:$PATH "$@") >"$work/out" 2>&1 || status=$?
    if [ "$status" != 0 ] || ! grep -q -e "$message" "$work/out"; then
        cat "$work/out" >&2
        echo "FAILED: status $status of $*, expected success with \"$message\"" >&2
        exit 1
    fi
}

stand_in dpkg-buildpackage lintian autopkgtest rpmbuild rpm rpmlint shellcheck makepkg cmake ctest abidw \
    abidiff
cat >"$work/bin/git" <<'TEXT'
#!/bin/sh
[ "$1" = archive ] && exec tar -c CMakeLists.txt
exec find . -type f -print0
TEXT
chmod +x "$work/bin/git"

fails_with 'no package was built' tools/package build/package --test --twice
# Packages, of which the installed ones pass one test of four.
cat >"$work/bin/dpkg-buildpackage" <<'TEXT'
#!/bin/sh
for name in thermika libthermika0 libthermika-dev libthermika-doc; do : >"../${name}_1_all.deb"; done
TEXT
printf '#!/bin/sh\necho 0\n' >"$work/bin/id"
printf '#!/bin/sh\necho "document             PASS"\n' >"$work/bin/unshare"
chmod +x "$work/bin/id" "$work/bin/unshare"
stand_in dpkg-deb
fails_with 'no tests ran' tools/package build/package --test
export DEB_BUILD_OPTIONS='parallel=1 nocheck'
fails_with 'the test demo did not pass' tools/package build/package --test
# What lintian finds, as far as it was told to mind, and packages that say where they were built.
succeeds_with 'reproducible: 4 packages' tools/package build/package --twice
cat >"$work/bin/lintian" <<'TEXT'
#!/bin/sh
case " $* " in *' --fail-on error,warning '*) echo 'W: it minds' && exit 2 ;; esac
TEXT
fails_with 'W: it minds' tools/package build/package
stand_in lintian
sed -i 's|: >|pwd >|' "$work/bin/dpkg-buildpackage"
fails_with '_1_all.deb differ' tools/package build/package --twice
unset DEB_BUILD_OPTIONS
rm "$work/bin/id" "$work/bin/unshare"
fails_with 'not three RPM packages' tools/package-elsewhere build/elsewhere

fails_with 'no library with functions' tools/abi revision
# abidiff's status says what its changes do to programs.
printf '#!/bin/sh\necho "<function-decl name=answer>"\n' >"$work/bin/abidw"
abidiff_answers() {
    printf '#!/bin/sh\nexit %s\n' "$1" >"$work/bin/abidiff"
}
succeeds_with 'nothing changed' tools/abi revision
abidiff_answers 4
succeeds_with 'keep working' tools/abi revision
abidiff_answers 12
fails_with 'do not fit any more' tools/abi revision
abidiff_answers 1
fails_with 'could not compare' tools/abi revision

# The reference: a manual that cannot be turned into a page, and pages that are not made.
cp -r "$project/docs" "$project/src" "$project/SECURITY.md" "$work/project"
printf '#!/bin/sh\necho "mandoc gives up" >&2; exit 3\n' >"$work/bin/mandoc"
cat >"$work/bin/doxygen" <<'TEXT'
#!/bin/sh
mkdir html xml
echo page >"html/index.html"
for header in include/thermika/*/*.h; do
    name=${header##*/}
    echo page >"html/${name%.h}_8h.html"
done
echo nothing >xml/nothing.xml
TEXT
chmod +x "$work/bin/mandoc" "$work/bin/doxygen"
fails_with 'mandoc gives up' tools/reference build/reference
printf '#!/bin/sh\necho "# Files"\n' >"$work/bin/mandoc"
fails_with 'no enumerator was found' tools/reference build/reference
echo "echo '<enumvalue ><name>A</name><para>a</para></enumvalue>' >xml/nothing.xml" >>"$work/bin/doxygen"
fails_with 'no page was made of embedding' tools/reference build/reference

cat >"$work/tool" <<'TEXT'
#!/bin/sh
echo "<serial>$2</serial>"
TEXT
chmod +x "$work/tool"
fails_with 'i386 .*another document' tools/ports "$work/tool" --tool i386
mkdir -p "$work/project/build/ports/i386/thermika"
printf '#!/bin/sh\n' >"$work/nothing"
chmod +x "$work/nothing"
cp "$work/nothing" "$work/project/build/ports/i386/thermika/thermika-genconfig"
fails_with 'i386 .*another document' tools/ports "$work/nothing" --tool i386
cp "$work/tool" "$work/project/build/ports/i386/thermika/thermika-genconfig"
mkdir -p "$work/project/build/ports/i386/system"
fails_with 'i386 .*no tests ran' tools/ports "$work/tool" i386
