#!/bin/sh
# The reference is built in a folder of any name, and is not when a public name has no description of
# its own, a header has no page, a link is dead, or a page shows Markdown as it is written. With the
# real Doxygen; where there is none the test is skipped, with status 77. "./dev docs", which installs
# it, runs the test too.
# usage: Reference_test.sh PROJECT
set -eu
project=$1
[ -d "${TMPDIR-/tmp}" ] || unset TMPDIR
if ! command -v doxygen >/dev/null || ! command -v mandoc >/dev/null; then
    echo 'SKIPPED: no doxygen or no mandoc here; "./dev docs" runs this test with both' >&2
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
clone="$work/it's a clone"
out="$work/the reader's pages"

# fresh: the clone as it is.
fresh() {
    rm -rf "$clone" "$out"
    mkdir -p "$clone"
    cp -r "$project/tools" "$project/docs" "$project/src" "$project/SECURITY.md" \
        "$project/CMakeLists.txt" "$clone"
}
# fails_with MESSAGE: the reference of the clone as it was changed.
fails_with() {
    if "$clone/tools/reference" "$out" >"$work/log" 2>&1 || ! grep -qF "$1" "$work/log"; then
        cat "$work/log" >&2
        echo "FAILED: expected a failure with \"$1\"" >&2
        exit 1
    fi
    fresh
}
# below LINE TEXT FILE: puts the text below the line.
below() {
    grep -qF "$1" "$clone/$3"
    awk -v line="$1" -v text="$2" '{ print } index($0, line) { print text }' "$clone/$3" >"$work/new"
    cp "$work/new" "$clone/$3"
}

fresh
"$clone/tools/reference" "$out" || {
    echo 'FAILED: no reference in a folder with a blank and an apostrophe' >&2
    exit 1
}
[ -s "$out/html/index.html" ]
[ -s "$out/html/performance-raw.txt" ]
grep -qF '<blockquote' "$out/html/md_files.html"
# What stands above a constructor is about neither the destructor nor a deleted one.
[ "$(grep -c 'mdescRight">Process: LC_NUMERIC is' "$out/html/classdax_1_1SimpleXML.html")" = 1 ] || {
    echo 'FAILED: a description is shown with a function that it is not about' >&2
    exit 1
}

below 'long double getTimeNow();' '    void undescribed();' src/sdk/Timer.h
fails_with 'Member undescribed() (function) of class dax::Timer is not documented'
below 'int getOpticsCount();' '    int undescribed();' src/imgproc/Cali.h
fails_with 'Member undescribed() (function) of class ConfigCali is not documented'
below 'long double getTimeNow();' '    int undescribed;' src/sdk/Timer.h
fails_with 'Member undescribed (variable) of class dax::Timer is not documented'
below 'std::int16_t Skim = 0;' '    int undescribed();' src/imgproc/Cali.h
fails_with 'Member undescribed() (function) of struct TemperatureRange is not documented'
below 'bool compTokens(' 'struct Undescribed { int number; };' src/sdk/SimpleXML.h
fails_with 'Undescribed is not documented'
echo 'int undescribed();' >>"$clone/src/sdk/Timer.h"
fails_with 'Member undescribed() (function) of file Timer.h is not documented'
below 'IRLOG_OFF = 1,' '    IRLOG_UNDESCRIBED = 6,' src/sdk/IRLogger.h
fails_with 'the enumerator IRLOG_UNDESCRIBED has no description'
below 'kPlanned,' '    kUndescribed,' src/fetch/Fetch.h
fails_with 'the enumerator kUndescribed has no description'
sed -i '1i #pragma once' "$clone/src/sdk/Timer.h"
fails_with 'no page was made of Timer.h'

echo '[Nowhere](nowhere.txt)' >>"$clone/docs/embedding.md"
fails_with 'md_embedding.html links to nowhere.txt'
printf '\n    **a list item** taken for code\n' >>"$clone/SECURITY.md"
fails_with 'a page shows ** as it is written'
