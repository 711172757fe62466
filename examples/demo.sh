#!/bin/sh
# Shows the tool's main job without a camera: in namespaces of its own it lays out a USB device tree
# with one camera and installs that camera's calibration description, then lets the tool find both.
# With FETCH and HOST it then shows, on standard error, how a program gets that camera's files: from
# a real HTTP server that stands in for HOST, and from a folder. With THERMIKA, the companion's
# executable, it shows before that how a person gets them. Nothing outside the namespaces changes.
#
# usage: examples/demo.sh TOOL [FETCH HOST [THERMIKA]]
#        examples/demo.sh --check              only whether the system allows such namespaces
# status: 71 when it does not
set -eu

# Root needs no user namespace, which a system may forbid although it allows the others.
if [ "${DEMO_INSIDE-}" != yes ]; then
    for user in '' '--user --map-root-user'; do
        # shellcheck disable=SC2086
        if unshare $user --mount --net mount -t tmpfs tmpfs /sys 2>/dev/null; then
            [ "$1" != --check ] || exit 0
            DEMO_INSIDE=yes exec unshare $user --mount --net sh "$0" "$@"
        fi
    done
    echo "This system does not allow private mount and network namespaces, in which the" \
        "demonstration and the tests run: become root, or allow user namespaces." >&2
    exit 71
fi
tool=$1
fetch=${2-}
host=${3-}
thermika=${4-}
examples=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)

# Read before anything is covered: the examples may lie below /usr/share.
description=$(cat "$examples/Cali-14080045.xml")

mount -t tmpfs tmpfs /sys
mount -t tmpfs tmpfs /usr/share

# add_device PATH ATTRIBUTE=VALUE...: as the kernel shows it, a directory and a link to it.
add_device() {
    mkdir -p "/sys/devices/$1" /sys/bus/usb/devices
    ln -s "../../../devices/$1" "/sys/bus/usb/devices/${1##*/}"
    path=/sys/devices/$1
    shift
    for attribute in "$@"; do
        echo "${attribute#*=}" >"$path/${attribute%%=*}"
    done
}
hub=pci0000:00/0000:00:14.0/usb1
add_device "$hub" idVendor=1d6b idProduct=0002 serial=0000:00:14.0
add_device "$hub/1-0:1.0" bInterfaceNumber=00
add_device "$hub/1-1" idVendor=046d idProduct=c31c
add_device "$hub/1-1/1-1:1.0" bInterfaceNumber=00
add_device "$hub/1-2" idVendor=0403 idProduct=de37 serial=14080045 \
    product="Thermal camera"
add_device "$hub/1-2/1-2:1.0" bInterfaceNumber=00

mkdir -p /usr/share/libthermika/cali
echo "$description" >/usr/share/libthermika/cali/Cali-14080045.xml

echo "A camera on the bus: $(cd /sys/bus/usb/devices && echo *)" >&2
[ -n "$fetch" ] || exec "$tool"
"$tool"

# From here on standard output is done with.
exec >&2
# /tmp, which may hold the programs, is covered next.
cp "$fetch" /usr/share/fetch-calibration
fetch=/usr/share/fetch-calibration
if [ -n "$thermika" ]; then
    cp "$thermika" /usr/share/thermika-of-the-demonstration
    thermika=/usr/share/thermika-of-the-demonstration
fi
# Below /tmp the working directory would be gone, and the copy's patterns are expanded there.
mkdir /usr/share/empty
cd /usr/share/empty
mount -t tmpfs tmpfs /tmp
ip link set lo up
echo "127.0.0.1 localhost $host" >/usr/share/hosts
if [ -e /etc/hosts ]; then
    mount --bind /usr/share/hosts /etc/hosts
else
    # A bare system has no such file to mount over: cover /etc with links to all it holds.
    mkdir /usr/share/etc /usr/share/covered-etc
    mount --rbind /etc /usr/share/covered-etc
    ln -s /usr/share/covered-etc/* /usr/share/hosts /usr/share/etc
    mount --bind /usr/share/etc /etc
fi
# wget keeps quiet and does not see this machine's settings.
echo 'quiet = on' >/usr/share/wgetrc
export SYSTEM_WGETRC=/usr/share/wgetrc HOME=/usr/share
unset WGETRC http_proxy

# What the vendor's server has: the files that each of two descriptions calls for. The library's
# download hands the names of files to the shell without quotes, so it needs optics without blanks
# in their texts.
served=/usr/share/served
files="$served/14/1408/Califiles SN14080045"
mkdir -p "$files"
cat >$served/downloadlinks.xml <<LINKS
<DownloadLinks>
  <Imager>
    <CaliData>
      <Links>
        <string>http://$host</string>
      </Links>
    </CaliData>
  </Imager>
</DownloadLinks>
LINKS
serve_files_of() {
    echo "$1" >"$files/Cali-14080045.xml"
    { "$fetch" missing "$files" 14080045 || true; } | while read -r name; do
        echo "made up for the demonstration" >"$files/$name"
    done
}
serve_files_of "$description"
serve_files_of "$(echo "$description" | sed 's/T18 HT/T18HT/')"

python3 -m http.server 80 --bind 127.0.0.1 --directory $served >/dev/null 2>&1 &
server=$!
trap 'kill $server' EXIT
tries=0
until wget -O /dev/null "http://$host/downloadlinks.xml" 2>/dev/null; do
    tries=$((tries + 1))
    [ $tries -lt 50 ] || {
        echo "the HTTP server does not answer (is python3 installed?)"
        exit 1
    }
    sleep 0.1
done

# What a person types, and what comes back.
show() {
    echo
    echo "\$ thermika $*"
    "$thermika" "$@"
}
if [ -n "$thermika" ]; then
    cd /usr/share
    show cameras
    show fetch
    show files
    show optics
    show config -o camera.xml
    show validate camera.xml
fi

echo
echo "Downloading the camera's files from http://$host, which is this machine here:"
mkdir /usr/share/downloaded
"$fetch" download /usr/share/downloaded 14080045
echo "files now: $(find /usr/share/downloaded -type f | wc -l)"

echo
echo "Copying them from that folder:"
mkdir /usr/share/copied
"$fetch" copy /usr/share/copied 14080045 /usr/share/downloaded
echo "files now: $(find /usr/share/copied -type f | wc -l)"
