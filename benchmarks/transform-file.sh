#!/usr/bin/env bash
# Transforms a file of points with nivora-cs and with cs2cs, compares the answers, and prints both times.
#   benchmarks/transform-file.sh [points]       1,000,000 by default; needs cs2cs (package proj-bin)
set -euo pipefail
export LC_ALL=C

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program=$root/build/release/bin/nivora-cs
count=${1:-1000000}
[ -x "$program" ] || { echo "build the release preset first" >&2; exit 1; }
command -v cs2cs >/dev/null || { echo "cs2cs is not installed (package proj-bin)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Longitude and latitude over zone 37; cs2cs keeps to the registry's order and wants the latitude first.
awk -v n="$count" -v lonlat="$work/lonlat" -v latlon="$work/latlon" 'BEGIN {
    for (i = 0; i < n; ++i) {
        f = i * 0.6180339887498949; lon = 36 + 6 * (f - int(f)); lat = 45 + 15 * i / n
        printf "%.8f %.8f\n", lon, lat > lonlat
        printf "%.8f %.8f\n", lat, lon > latlon
    }
}'

# seconds COMMAND…: best wall-clock time of three runs, file to file
seconds() {
    local best='' took run
    for run in 1 2 3; do
        took=$({ TIMEFORMAT=%R; time "$@"; } 2>&1)
        best=$(printf '%s\n%s\n' "$best" "$took" | awk 'NF' | sort -g | head -n 1)
    done
    echo "$best"
}
ours() { "$program" transform --from 4326 --to 32637 --precision 4 <"$work/lonlat" >"$work/ours"; }
theirs() { cs2cs -f %.4f EPSG:4326 EPSG:32637 <"$work/latlon" >"$work/theirs"; }

us=$(seconds ours)
them=$(seconds theirs)
paste "$work/ours" "$work/theirs" | awk -v n="$count" '
    { dx = $1 - $3; dy = $2 - $4; d = dx * dx + dy * dy; if (!(d <= 1e-6)) ++bad }
    END { if (NR != n || bad) { printf "%d lines of %d, %d more than a millimetre apart\n", NR, n, bad; exit 1 } }'
awk -v a="$us" -v b="$them" -v n="$count" \
    'BEGIN { printf "%d points: nivora-cs %.2f s, cs2cs %.2f s, ratio %.2f\n", n, a, b, a / b }'
