#!/bin/sh
# The documents say what is there: the map names every unit of the library and nothing else, links
# lead to files, SECURITY.md names real test suites, README's commands are all tried somewhere, and all
# that names a version names the same one.
# usage: documents_test.sh PROJECT
set -eu
cd "$1"
[ -d "${TMPDIR-/tmp}" ] || unset TMPDIR
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
# A source package has debian/ where Debian's tools look for it.
debian=packaging/debian
[ -d "$debian" ] || debian=debian

fail() {
    echo "FAILED: $1" >&2
    failed=1
}

# names FILE PATTERN: what stands between backquotes and matches.
names() {
    # shellcheck disable=SC2016
    grep -o '`[^`]*`' "$1" | tr -d '`' | grep -Ex "$2" | sort -u
}

units='(app|sdk|imgproc|fetch|cli)(/[a-z]+)*/[A-Z][A-Za-z]*'
[ "$(names ARCHITECTURE.md "$units" | wc -l)" -ge 25 ] || fail 'ARCHITECTURE.md names hardly a unit'
for unit in $(names ARCHITECTURE.md "$units"); do
    [ -e "src/$unit.h" ] || [ -e "src/$unit.cpp" ] || fail "ARCHITECTURE.md names src/$unit"
done
find src/app src/sdk src/imgproc \( -name '*.h' -o -name '*.cpp' \) |
    sed 's#^src/##; s#\.[a-z]*$##' | sort -u >"$work/units"
while read -r unit; do
    names ARCHITECTURE.md "$units" | grep -qx "$unit" || fail "ARCHITECTURE.md does not name $unit"
done <"$work/units"

for document in *.md docs/*.md; do
    folder=$(dirname "$document")
    grep -o ']([^):#]*)' "$document" | sed 's/](\(.*\))/\1/' | while read -r target; do
        [ -e "$folder/$target" ] || echo "$document: $target"
    done
done >"$work/lost"
[ ! -s "$work/lost" ] || fail "links to files that are not there: $(cat "$work/lost")"

# shellcheck disable=SC2016
sed -n '/^| promise/,/^$/p' SECURITY.md | cut -d'|' -f3 | grep -o '`[^`]*`' | tr -d '`' | sort -u |
    while read -r suite; do
        grep -rqE "^(TEST(_F|_P)?|INSTANTIATE_TEST_SUITE_P)\(${suite}[A-Za-z]*, |NAME $suite\." tests ||
            echo "$suite"
    done >"$work/lost"
[ ! -s "$work/lost" ] || fail "SECURITY.md names test suites that are not there: $(cat "$work/lost")"

[ "$(wc -l <README.md)" -le 100 ] || fail 'README.md has more than 100 lines'
# Each command is tried: tools/bare takes those that it runs from README, the demonstration runs the
# companion's, and a clone is what all of it begins with.
commands=$(sed -n 's/^    \$ //p' README.md)
[ -n "$commands" ] || fail 'README.md shows no command'
tools/bare --commands >"$work/tried"
echo "$commands" | while read -r command; do
    case $command in
    'sudo thermika '* | 'thermika '*) grep -qE "^ *show ${command#*thermika }$" examples/demo.sh ;;
    'git clone ADDRESS thermika && cd thermika') grep -q 'git .*clone --quiet' tools/bare ;;
    *) grep -qFx -e "$command" "$work/tried" ;;
    esac || echo "$command"
done >"$work/untried"
[ ! -s "$work/untried" ] || fail "README.md shows commands that nothing tries: $(cat "$work/untried")"

# tools/bare runs README's commands whatever they are, and only before a release: here every test run
# sees that the verbs, packages, presets and modules in them exist.
./dev help >"$work/usage"
# lost_verbs DOCUMENT: those that ./dev lacks, and options that it lacks where it lists any.
lost_verbs() {
    grep -o '\./dev [^)`]*' "$1" | while read -r door verb options; do
        [ "$door" = ./dev ]
        grep -q "^  $verb " "$work/usage" || echo "$verb"
        for option in $options; do
            case $option in
            --*) grep -qE -e "^  $verb (\[ARGS\]|.*$option)" "$work/usage" || echo "$verb $option" ;;
            esac
        done
    done
}
# A command of another form stays whole here, and is the name of nothing.
echo "$commands" | sed 's/ && cmake /\ncmake /' >"$work/commands"
# shellcheck disable=SC2016
{
    lost_verbs README.md
    sed -n 's/_\*\.deb//g; s/^sudo apt install //p' "$work/commands" | tr ' ' '\n' |
        while read -r package; do
            grep -qFx "Package: ${package#./}" "$debian/control" || echo "$package"
        done
    grep '^cmake ' "$work/commands" |
        sed -E 's#^cmake (--build )?--preset ##; s#^cmake --install build/(.*) --prefix PREFIX$#\1#' |
        while read -r preset; do
            grep -qF "{ \"name\": \"$preset\", " CMakePresets.json || echo "$preset"
        done
    grep '^c++ ' "$work/commands" |
        sed 's/^c++ -std=c++17 yours\.cpp -o yours \$(pkg-config --cflags --libs \(.*\))$/\1/' |
        tr ' ' '\n' | while read -r module; do
            [ -f "cmake/$module.pc.in" ] || echo "$module"
        done
} >"$work/lost"
[ ! -s "$work/lost" ] || fail "README.md names what is not there: $(cat "$work/lost")"

# RELEASING.md: numbered without a gap, and every verb, option and file of its commands is there.
sed -n 's/^\([0-9]*\)\. .*/\1/p' RELEASING.md >"$work/numbers"
if [ ! -s "$work/numbers" ] || ! seq "$(wc -l <"$work/numbers")" | cmp -s - "$work/numbers"; then
    fail 'the steps of RELEASING.md are not numbered one by one'
fi
sed -n 's/^       //p' RELEASING.md >"$work/commands"
lost_verbs "$work/commands" >"$work/lost"
[ ! -s "$work/lost" ] || fail "RELEASING.md calls verbs that ./dev lacks: $(cat "$work/lost")"
# A folder of root's below build/ would stop the next command; git status always succeeds.
if grep -n 'sudo \./dev' "$work/commands" | grep -v '(cd \.\./thermika-as-root && sudo'; then
    fail 'RELEASING.md lets root work in the clone of another user'
fi
# shellcheck disable=SC2016
if grep -n 'git status' "$work/commands" | grep -v 'test -z "\$(git status --porcelain)"'; then
    fail 'RELEASING.md takes any answer of git status'
fi
# The first step finds each place that lacks a licence: all of them do, or none.
grep -qFx "! git grep -n 'not-chosen-yet' -- LICENSE README.md packaging" "$work/commands" ||
    fail 'RELEASING.md does not ask for a licence'
licences="LICENSE README.md $debian/copyright packaging/arch/PKGBUILD packaging/rpm/thermika.rpm.in"
# shellcheck disable=SC2086
case $(grep -l not-chosen-yet $licences | wc -l) in
0 | 5) ;;
*) fail "the licence is chosen in some of $licences only" ;;
esac
# One version: CMake's. The changelog may have no release yet, or changes since the last one.
version=$(sed -n 's/^project(thermika VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$version" ] || fail 'CMakeLists.txt has no version'
head -n 1 "$debian/changelog" | grep -qF "thermika ($version-1) " ||
    fail "$debian/changelog does not begin with $version-1"
grep -qFx "pkgver=$version" packaging/arch/PKGBUILD || fail "PKGBUILD is not for $version"
grep -q '^Version: *@VERSION@$' packaging/rpm/thermika.rpm.in ||
    fail 'thermika.rpm.in has a version of its own'
released=$(sed -n 's/^## \[\([0-9][0-9.]*\)\] - ....-..-..$/\1/p' CHANGELOG.md | head -n 1)
[ "${released:-$version}" = "$version" ] || fail "CHANGELOG.md's last release is $released"
[ "$(grep -c '^## \[Unreleased\]$' CHANGELOG.md)" = 1 ] || fail 'CHANGELOG.md has no [Unreleased]'
# The program of tests/consumer compares the numbers; 0.1.0 would hide that two are exchanged.
for number in Major Minor Patch; do
    grep -qFx "constexpr int kVersion$number = @PROJECT_VERSION_$(echo $number | tr '[:lower:]' '[:upper:]')@;" \
        src/sdk/Version.h.in || fail "Version.h.in has another kVersion$number"
done
# The sources that are published are those that the other packages ask for.
for file in packaging/arch/PKGBUILD packaging/rpm/thermika.rpm.in; do
    grep -q 'version}*\.tar\.xz$\|pkgver\.tar\.xz")$' "$file" || fail "$file wants other sources"
done

for file in .ci/run CMakeLists.txt packaging/arch/PKGBUILD CHANGELOG.md "$debian/changelog"; do
    [ -f "$file" ] || fail "RELEASING.md is about $file, which is not there"
done
exit $failed
