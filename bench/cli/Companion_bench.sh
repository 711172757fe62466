#!/bin/sh
# How long the companion takes to start, and to list a bus of 1,000 devices. Prints a line for each
# figure: its name, ours, theirs in microseconds (the median of RUNS), their ratio. By hand:
#   bench/cli/Companion_bench.sh BUILD_DIR [RUNS]
# BUILD_DIR holds thermika, thermika-genconfig and the benchmarks. The bus and the description lie
# below /sys and /usr/share of a private mount namespace.
set -eu
runs=${2:-200}
if [ "${3:-}" != in-namespace ]; then
    exec unshare -Urm sh "$0" "$(cd "$1" && pwd)" "$runs" in-namespace
fi

examples=$(cd "$(dirname "$0")/../../examples" && pwd)
serial=14080045
companion=$1/src/cli/thermika
tool=$1/thermika-genconfig
pairs=$1/bench/thermika-bench-runs
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mount -t tmpfs tmpfs /usr/share
mkdir -p /usr/share/libthermika/cali
cp "$examples/Cali-$serial.xml" /usr/share/libthermika/cali

# $1: name; $2: our arguments; the rest: the other program.
compare() {
    name=$1
    ours=$2
    shift 2
    # Word splitting is wanted: a list of arguments.
    # shellcheck disable=SC2086
    "$pairs" "$runs" "$companion" $ours -- "$@" >"$folder/runs"
    { read -r oursMicros _ && read -r theirsMicros _; } <"$folder/runs"
    awk -v name="$name" -v ours="$oursMicros" -v theirs="$theirsMicros" \
        'BEGIN { printf "%s %s %s %.3f\n", name, ours, theirs, ours / theirs }'
}

compare version-to-curl --version "$(command -v curl)" --version
compare version-to-genconfig --version "$tool" -d $serial
compare config-to-curl "config $serial" "$(command -v curl)" --version
compare config-to-genconfig "config $serial" "$tool" -d $serial

# A bus as the kernel shows it: links to folders, with the files that lsusb reads too.
mount -t tmpfs tmpfs /sys
python3 - <<'PYTHON'
import os

os.makedirs("/sys/bus/usb/devices")
for number in range(1000):
    bus, device = number // 100 + 1, number % 100 + 1
    name = f"{bus}-{device}"
    folder = f"/sys/devices/{name}"
    os.makedirs(folder)
    product = "de37" if number == 999 else "6001"
    ids = bytes([3, 4]) + bytes.fromhex(product)[::-1]
    descriptor = bytes([18, 1, 0, 2, 0, 0, 0, 64]) + ids + bytes([0, 1, 0, 0, 0, 1])
    descriptor += bytes([9, 2, 18, 0, 1, 1, 0, 128, 50]) + bytes([9, 4, 0, 0, 0, 255, 255, 255, 0])
    texts = {
        "idVendor": "0403", "idProduct": product, "product": "Imager", "serial": "14080045",
        "busnum": str(bus), "devnum": str(device), "speed": "480", "bConfigurationValue": "1",
        "bDeviceClass": "00", "bNumConfigurations": "1",
        "uevent": f"MAJOR=189\nMINOR={number}\nDEVNAME=bus/usb/{bus:03}/{device:03}\n"
                  "DEVTYPE=usb_device\nDRIVER=usb",
    }
    for file, text in texts.items():
        with open(f"{folder}/{file}", "w", encoding="ascii") as out:
            out.write(text + "\n")
    with open(f"{folder}/descriptors", "wb") as out:
        out.write(descriptor)
    os.symlink("../../../bus/usb", f"{folder}/subsystem")
    os.symlink(f"../../../devices/{name}", f"/sys/bus/usb/devices/{name}")
PYTHON
[ "$("$companion" cameras --serials --quiet)" = $serial ] || {
    echo "the companion does not see the camera" >&2
    exit 1
}
# libudev takes a tree that is no sysfs only when told to.
export SYSTEMD_DEVICE_VERIFY_SYSFS=0
seen=$(lsusb | wc -l)
[ "$seen" = 1000 ] || {
    echo "lsusb sees $seen devices of 1000, so there is nothing to compare with" >&2
    exit 1
}
compare cameras-to-lsusb "cameras --quiet" "$(command -v lsusb)"
