#!/usr/bin/env bash
# Converts a file of lines with nivora-cs and with ogr2ogr into several formats, in turns, compares where a vertex
# ended, and prints both best wall and processor times as rows of a table.
#   benchmarks/convert-file.sh [vertices [runs]]   1,000,000 and 5 by default; needs ogr2ogr (package gdal-bin)
# PROGRAM: the nivora-cs to measure, that of the release preset when not set.
set -euo pipefail
export LC_ALL=C

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program=${PROGRAM:-$root/build/release/bin/nivora-cs}
vertices=${1:-1000000}
runs=${2:-5}
[ -x "$program" ] || { echo "build the release preset first" >&2; exit 1; }
command -v ogr2ogr >/dev/null || { echo "ogr2ogr is not installed (package gdal-bin)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Lines of a hundred vertices over zone 37.
awk -v n="$((vertices / 100))" 'BEGIN {
    print "id,WKT"
    for (i = 0; i < n; ++i) {
        f = i * 0.6180339887498949; x = 36 + 6 * (f - int(f)); y = 45 + 15 * i / n
        printf "%d,\"LINESTRING (", i
        for (j = 0; j < 100; ++j)
            printf "%s%.7f %.7f", j ? "," : "", x + 1e-5 * j, y + 1e-5 * (j * 7 % 13)
        print ")\""
    }
}' >"$work/in.csv"
"$program" convert --from 4326 "$work/in.csv" "$work/in.gpkg"

# measure KIND COMMAND…: keeps the best wall and processor time of KIND
declare -A wall cpu
measure() {
    local kind=$1 took
    shift
    took=$({ TIMEFORMAT='%R %U %S'; time "$@" >/dev/null 2>&1; } 2>&1)
    read -r w u s <<<"$took"
    wall[$kind]=$(awk -v a="$w" -v b="${wall[$kind]:-9e9}" 'BEGIN {print a < b ? a : b}')
    cpu[$kind]=$(awk -v a="$u" -v b="$s" -v c="${cpu[$kind]:-9e9}" 'BEGIN {print a + b < c ? a + b : c}')
}

# The first vertex of a file, and how many features there are.
summary() { ogrinfo -q -al -geom=SUMMARY "$1" 2>/dev/null | grep -c '^OGRFeature'; }
extent() { ogrinfo -so -al "$1" 2>/dev/null | sed -n 's/^Extent: //p'; }

same_place() {
    [ "$(summary "$1")" = "$(summary "$2")" ] || { echo "the counts of features differ: $1" >&2; exit 1; }
    printf '%s\n%s\n' "$(extent "$1")" "$(extent "$2")" | tr -c '0-9.\n-' ' ' |
        awk 'NR == 1 {split($0, a)} NR == 2 {split($0, b)}
             END {for (i = 1; i <= 5; ++i) if (a[i] != "-" && (a[i] - b[i]) ^ 2 > 1e-4) {print "places differ"; exit 1}}'
}

printf '| %s vertices into | wall, s | ogr2ogr | ratio | processor, s | ogr2ogr | ratio |\n|---|---|---|---|---|---|---|\n' "$vertices"
while read -r extension driver; do
    wall=() cpu=()
    for _ in $(seq "$runs"); do
        rm -f "$work"/ours.* "$work"/theirs.*
        measure ours "$program" convert --to 32637 "$work/in.gpkg" "$work/ours.$extension"
        measure theirs ogr2ogr -t_srs EPSG:32637 -f "$driver" "$work/theirs.$extension" "$work/in.gpkg"
    done
    same_place "$work/ours.$extension" "$work/theirs.$extension"
    awk -v f="$driver ($extension)" -v a="${wall[ours]}" -v b="${wall[theirs]}" -v c="${cpu[ours]}" \
        -v d="${cpu[theirs]}" \
        'BEGIN {printf "| %s | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f |\n", f, a, b, a / b, c, d, c / d}'
done <<'FORMATS'
shp ESRI Shapefile
gpkg GPKG
mif MapInfo File
tab MapInfo File
geojson GeoJSON
FORMATS
