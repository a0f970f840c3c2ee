#!/usr/bin/env bash
# igv_snapshot.sh -- a run of the bundled example opened in IGV (batch mode, under Xvfb), saved as docs/igv-snapshot.png.
# Needs Debian's igv (sudo apt-get install igv) besides the build; it is not part of scripts/setup.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cli="$here/build/src/cli/trelvane-cli"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

command -v igv >/dev/null || { echo "igv is not installed: sudo apt-get install igv" >&2; exit 1; }
command -v xvfb-run >/dev/null || { echo "xvfb-run is not installed: sudo apt-get install xvfb" >&2; exit 1; }

# The genome IGV shows under the tracks: the longest sequence, with an index
# of the one record (name, length, offset, bases a line, bytes a line).
cp "$here/examples/HUMHBB.fa" "$work/HUMHBB.fa"
awk 'NR == 1 { name = substr($1, 2); offset = length($0) + 1; next }
     NR == 2 { width = length($0) } { n += length($0) }
     END { printf "%s\t%d\t%d\t%d\t%d\n", name, n, offset, width, width + 1 }' "$work/HUMHBB.fa" > "$work/HUMHBB.fa.fai"

"$cli" compare "$here/examples/HUMHBB.fa" "$here/examples/V00508.fa" --seed 1 --quiet \
  --bigwig "$work/identity.bw" --h0-tracks "$work/h0" --segments "$work/segments.bed"

cat > "$work/batch.txt" <<BATCH
new
genome $work/HUMHBB.fa
load $work/identity.bw
load $work/h0.upper.bedGraph
load $work/segments.bed
goto HUMHBB:16000-23000
snapshotDirectory $work
snapshot igv-snapshot.png
exit
BATCH
xvfb-run -a -s "-screen 0 1280x800x24" igv -b "$work/batch.txt"
cp "$work/igv-snapshot.png" "$here/docs/igv-snapshot.png"
echo "docs/igv-snapshot.png"
