#!/bin/sh
# A whole run of the tool with a description of 11 KB against a program that includes iostream and
# does nothing, linked statically as the tool is, and dynamically. Prints a line for each figure: its
# name, against which of the two, ours, theirs. By hand:
#   bench/app/Tool_bench.sh BUILD_DIR [RUNS]
# The description lies in /usr/share of a private mount namespace.
set -eu
runs=${2:-1000}
if [ "${3:-}" != in-namespace ]; then
    exec unshare -Urm sh "$0" "$(cd "$1" && pwd)" "$runs" in-namespace
fi

examples=$(cd "$(dirname "$0")/../../examples" && pwd)
serial=14080045
tool=$1/thermika-genconfig
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mount -t tmpfs tmpfs /usr/share
mkdir -p /usr/share/libthermika/cali
cp "$examples/Cali-$serial.xml" /usr/share/libthermika/cali

"$tool" -d "$serial" > "$folder/document"
if ! grep -q '<fov>33</fov>' "$folder/document"; then
    echo "the tool has not read the description" >&2
    exit 1
fi

# Instructions in user mode: counted by the processor where it can, by valgrind where not.
instructions() {
    counted=$(perf stat -x, -e instructions:u "$@" 2>&1 >/dev/null |
        sed -n 's/^\([0-9][0-9]*\),.*instructions.*/\1/p')
    if [ -z "$counted" ]; then
        counted=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null "$@" 2>&1 >/dev/null |
            sed -n 's/.*Collected : \([0-9]*\).*/\1/p')
    fi
    echo "$counted"
}

systemCalls() {
    strace -f -o "$folder/trace" "$@" > /dev/null
    grep -vc -e '+++' -e '---' "$folder/trace"
}

figure() {
    for number in "$3" "$4"; do
        case $number in
        '' | *[!0-9.]*)
            echo "no number for $1: $number" >&2
            exit 1
            ;;
        esac
    done
    echo "$1 $2 $3 $4"
}

ourInstructions=$(instructions "$tool" -d $serial)
ourCalls=$(systemCalls "$tool" -d $serial)
for linking in static dynamic; do
    empty=$1/bench/thermika-bench-empty-$linking
    figure instructions $linking "$ourInstructions" "$(instructions "$empty")"
    figure system-calls $linking "$ourCalls" "$(systemCalls "$empty")"
    "$1/bench/thermika-bench-runs" "$runs" "$tool" -d $serial -- "$empty" > "$folder/runs"
    { read -r oursMicros oursKb && read -r theirsMicros theirsKb; } < "$folder/runs"
    figure wall-us $linking "$oursMicros" "$theirsMicros"
    figure peak-kb $linking "$oursKb" "$theirsKb"
done
