#!/bin/sh
# The first load of a description by a program, from its start to its end: ours against the same
# program with each other library. Prints a line for each pair: what was loaded and whether from the
# disk, the library, wall time of ours and theirs in microseconds, peak memory of ours and theirs in
# kilobytes. By hand:
#   bench/app/FirstLoad_bench.sh BUILD_DIR [RUNS]
set -eu
build=$1/bench
runs=${2:-200}
folder=$(mktemp -d "$1/first-load-XXXXXX") # on the disk that the build is on: /tmp may be in memory
trap 'rm -rf "$folder"' EXIT

"$build/thermika-bench-make-descriptions" "$folder"
for size in 11K 1M; do
    file=$folder/$size.xml
    for library in rapidxml pugixml expat libxml2 tinyxml2; do
        for cache in warm cold; do
            cold=
            [ $cache = warm ] || cold="--cold $file"
            # Word splitting is wanted: two words or none.
            # shellcheck disable=SC2086
            "$build/thermika-bench-runs" $cold "$runs" \
                "$build/thermika-bench-first-load-SimpleXml" "$file" -- \
                "$build/thermika-bench-first-load-$library" "$file" > "$folder/runs"
            { read -r oursMicros oursKb && read -r theirsMicros theirsKb; } < "$folder/runs"
            echo "$size/$cache $library $oursMicros $theirsMicros $oursKb $theirsKb"
        done
    done
done
