#!/bin/sh
# Counts the system calls of a walk over the USB bus: how many a further foreign device costs, and
# how many a further interface entry. By hand:
#   bench/sdk/SerialDiscovery_calls.sh BUILD_DIR
set -eu
program=$1/bench/thermika-bench-discovery
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Calls of a walk by $1 over $2 devices with $3 interfaces each.
calls() {
    strace -o "$folder/trace" "$program" --walk "$1" "$2" "$3"
    sed '1,/"\/walk-begins"/d; /^+++/d' "$folder/trace" | wc -l
}

# $1: what is counted; $2 and $3: calls with 100 of them and with none.
perEntry() {
    awk -v name="$1" -v with="$2" -v without="$3" \
        'BEGIN { printf "%s %.2f\n", name, (with - without) / 100 }'
}

for walk in ours plain; do
    perEntry "$walk-per-device" "$(calls $walk 200 0)" "$(calls $walk 100 0)"
    perEntry "$walk-per-interface" "$(calls $walk 100 1)" "$(calls $walk 100 0)"
done
