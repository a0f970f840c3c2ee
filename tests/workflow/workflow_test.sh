#!/usr/bin/env bash
# workflow_test.sh TRELVANE_CLI -- the Snakemake workflow on the globin example with the reference
# cut in chunks: the joined tracks and segments are those of one whole run, byte for byte; the
# figure and the table cover every pair; the same again through a cluster's submit command,
# every job a process of its own.
set -euo pipefail
cli=$1
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap '[ -n "${KEEP:-}" ] || rm -rf "$work"' EXIT
cd "$work"
options="--window 30 --resamplings 50 --identities 29"
segments="--min-identity 0.8 --min-length 60"
cat > config.yaml <<YAML
reference: {file: $root/examples/HUMHBB.fa, region: ""}
others: {V00508: $root/examples/V00508.fa, HBB: $root/examples/HBB-region.fa}
annotation: $root/examples/HUMHBB.gff3
options: "$options"
segments: "$segments"
seed: 3
chunk_size: 20000
trelvane: $cli
YAML
fail() { echo "FAILED: $*" >&2; exit 1; }
run() { snakemake -s "$root/workflow/Snakefile" --configfile config.yaml -q "$@" > "$work/snakemake.log" 2>&1 ||
        { cat "$work/snakemake.log" >&2; fail "snakemake $*"; }; }

run --cores 2 --config out=local
[ "$(ls local/pairs/V00508/chunks | wc -l)" = 4 ] || fail "73 kb in chunks of 20000 should make 4 jobs"
"$cli" compare "$root/examples/HUMHBB.fa" "$root/examples/V00508.fa" $options --seed 3 --quiet \
    --bedgraph whole.bedGraph --h0-tracks whole
for track in "" .mean .upper .lower .max; do
  cmp "whole$track.bedGraph" "local/pairs/V00508/profile$track.bedGraph" || fail "joined track profile$track"
done
"$cli" stack whole.bedGraph --name V00508 $segments --table whole.tsv
cmp whole.tsv local/pairs/V00508/segments.tsv || fail "segments of the joined track"
[ "$(wc -l < local/pairs/V00508/segments.tsv)" -gt 5 ] || fail "the epsilon gene and its paralogs give segments"
bedtools sort -i local/pairs/V00508/segments.bed | cmp - local/pairs/V00508/segments.bed || fail "segments.bed sorted"
[ "$(cut -f1 local/segments.tsv | sort -u | tr '\n' ' ')" = "HBB V00508 panel " ] || fail "summary lists both pairs"
grep -q 'HBE1' local/stack.svg || fail "figure shows the annotation"
head -c 8 local/stack.png | od -An -c | grep -q 'P   N   G' || fail "figure as PNG"

export TRELVANE_SUBMIT_LOG=$work/submitted
run --jobs 4 --latency-wait 30 --cluster "$root/tests/workflow/local_submit.sh" --config out=cluster
for f in $(cd local && find . -name '*.bedGraph' -o -name '*.tsv' -o -name '*.bed' -o -name 'result.txt'); do
  cmp "local/$f" "cluster/$f" || fail "cluster gave another $f"
done
# index 3, compare 8 chunks, join 2, segments 2, stack 1
[ "$(sort -u submitted | wc -l)" = 16 ] || fail "16 jobs, each its own process: $(wc -l < submitted) submitted"
echo "workflow: chunks joined to the whole run, locally and through the submit command"
