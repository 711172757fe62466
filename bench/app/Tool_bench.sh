#!/bin/sh
# A whole run of the tool with a description of 11 KB against a program that includes iostream and
# does nothing. Prints a line for each figure: its name, ours, theirs, their ratio. By hand:
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
empty=$1/bench/thermika-bench-empty-iostream
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
    awk -v name="$1" -v ours="$2" -v theirs="$3" \
        'BEGIN { printf "%s %s %s %.3f\n", name, ours, theirs, ours / theirs }'
}

figure instructions "$(instructions "$tool" -d $serial)" "$(instructions "$empty")"
figure system-calls "$(systemCalls "$tool" -d $serial)" "$(systemCalls "$empty")"
"$1/bench/thermika-bench-runs" "$runs" "$tool" -d $serial -- "$empty" > "$folder/runs"
{ read -r oursMicros oursKb && read -r theirsMicros theirsKb; } < "$folder/runs"
figure wall-us "$oursMicros" "$theirsMicros"
figure peak-kb "$oursKb" "$theirsKb"
