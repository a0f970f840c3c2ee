#!/usr/bin/env bash
# local_submit.sh JOBSCRIPT -- stands in for a cluster's submit command (sbatch, qsub) in the
# tests: each job script Snakemake hands over runs as a process of its own, detached, and the
# job's number (its process id) is printed and kept in $TRELVANE_SUBMIT_LOG.
set -euo pipefail
setsid bash "$1" >> "${TRELVANE_SUBMIT_LOG:?}.out" 2>&1 < /dev/null &
echo "$!" | tee -a "$TRELVANE_SUBMIT_LOG"
