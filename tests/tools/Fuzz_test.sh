#!/bin/sh
# fuzz/run must fail where it tried nothing: no target, one that is missing or executes nothing, and
# inputs that could not be saved.
# usage: Fuzz_test.sh PROJECT
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR="$work"

# The script finds what is saved from where it lies.
mkdir -p "$work/project/fuzz/corpus/Reader" "$work/project/examples" "$work/build/fuzz"
cp "$1/fuzz/run" "$1/fuzz/dictionary" "$work/project/fuzz/"
echo saved >"$work/project/fuzz/corpus/Reader/one"
programs=$work/build/fuzz

# target EXECUTED [STATUS [STATUS-OF-SAVING]]: how the fuzz target behaves from now on.
target() {
    cat >"$programs/Reader-fuzz" <<TEXT
#!/bin/sh
case "\$*" in
*merge*) exit ${3-0} ;;
esac
[ "$1" = none ] || echo "stat::number_of_executed_units: $1"
exit ${2-0}
TEXT
    chmod +x "$programs/Reader-fuzz"
}
fuzz() {
    status=0
    "$work/project/fuzz/run" "$work/build" 1 "$@" >"$work/out" 2>&1 || status=$?
}
answers() { # answers STATUS MESSAGE
    if [ "$status" != "$1" ] || ! grep -q "$2" "$work/out"; then
        cat "$work/out"
        echo "FAILED: status $status, expected $1 with \"$2\"" >&2
        exit 1
    fi
}

target 1000
fuzz
answers 1 'no fuzz targets'
: >"$programs/targets"
fuzz
answers 1 'no fuzz targets'

echo Reader >"$programs/targets"
fuzz
answers 0 'Reader: 1000 inputs, no finding'
fuzz save
answers 0 'Reader: 1000 inputs, no finding'
target 1000 0 1
fuzz save
answers 1 'Reader: could not save'
target 1000 77
fuzz
answers 1 'Reader: FINDING'
target none
fuzz
answers 1 'nothing was tried'
target 0
fuzz
answers 1 'nothing was tried'
target 1 # the saved one
fuzz
answers 1 'nothing was tried'

target 1000
printf 'Reader\nForgotten\n' >"$programs/targets"
fuzz
answers 1 'Forgotten'
