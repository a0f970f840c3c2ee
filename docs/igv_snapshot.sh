#!/usr/bin/env bash
# igv_snapshot.sh -- a run of the bundled example opened in IGV (batch mode, under Xvfb), saved as docs/igv-snapshot.png.
# Needs Debian's igv and xvfb besides the build (apt-get install igv xvfb); they are not part of scripts/setup.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cli="$here/build/src/cli/trelvane-cli"
out="${1:-$here/docs/igv-snapshot.png}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

command -v igv >/dev/null || { echo "igv is not installed: apt-get install igv" >&2; exit 1; }
command -v xvfb-run >/dev/null || { echo "xvfb-run is not installed: apt-get install xvfb" >&2; exit 1; }
[ -x "$cli" ] || { echo "$cli is not built: scripts/build" >&2; exit 1; }

# The genome IGV shows under the tracks: the longest sequence, with an index
# of its one record (name, length, offset, bases a line, bytes a line).
cp "$here/examples/HUMHBB.fa" "$work/HUMHBB.fa"
awk 'NR == 1 { name = substr($1, 2); offset = length($0) + 1; next }
     NR == 2 { width = length($0) } { n += length($0) }
     END { printf "%s\t%d\t%d\t%d\t%d\n", name, n, offset, width, width + 1 }' "$work/HUMHBB.fa" > "$work/HUMHBB.fa.fai"

"$cli" compare "$here/examples/HUMHBB.fa" "$here/examples/V00508.fa" --seed 1 --quiet --track-line \
  --bigwig "$work/identity.bw" --h0-tracks "$work/h0" --segments "$work/segments.bed"

cat > "$work/batch.txt" <<BATCH
genome $work/HUMHBB.fa
load $work/identity.bw
load $work/h0.mean.bedGraph
load $work/h0.upper.bedGraph
load $work/h0.max.bedGraph
load $work/segments.bed
maxPanelHeight 230
goto HUMHBB:16000-23000
snapshotDirectory $work
snapshot igv-snapshot.png
exit
BATCH
# The batch names its genome first: a batch that does not makes IGV fetch
# its default genome from the network and wait for it. Its preferences go to
# the temporary folder, not ~/igv; the timeout ends a run that hangs all the same.
JAVA_TOOL_OPTIONS="-Duser.home=$work" timeout 120 \
  xvfb-run -a -s "-screen 0 1000x600x24" igv -b "$work/batch.txt" > "$work/igv.log" 2>&1 || true
if [ ! -s "$work/igv-snapshot.png" ]; then
  echo "IGV saved no snapshot; its log ends:" >&2
  tail -20 "$work/igv.log" >&2
  exit 1
fi
cp "$work/igv-snapshot.png" "$out"
echo "$out"
