#!/usr/bin/env bash
# Makes a sweep as a job array of Slurm: a shard for each task, with a results file of its own.
#SBATCH --job-name=opc-sweep
#SBATCH --array=1-4
#SBATCH --cpus-per-task=1
#SBATCH --time=1:00:00
#SBATCH --requeue
#SBATCH --open-mode=append
#SBATCH --output=%x-%A-%a.log
set -euo pipefail

usage="usage: sbatch [--array=1-N] [SBATCH OPTION...] slurm-array.sh SWEEP.toml [N]
Each task of the array makes one of N shards, with as many runs at the same time as it has CPUs. The results are in the
folder that the job was submitted from, which all nodes must see: task 2 of 4 writes SWEEP-2-of-4.db. A task that is
requeued, or submitted again, goes on with the runs that are missing. N is the number of tasks unless it is given:

  sbatch --array=1-8 --cpus-per-task=16 slurm-array.sh step-response.toml
      eight shards
  sbatch --array=3,7 slurm-array.sh step-response.toml 8
      shards 3 and 7 of eight once more

A job that follows joins the shards, and says when runs are missing, whatever has become of the tasks:

  array=\$(sbatch --parsable --array=1-8 slurm-array.sh step-response.toml)
  sbatch --dependency=afterany:\$array --wrap 'opc sweep-merge step-response.db step-response-*-of-8.db'"

case "${1:-}" in -h | --help) echo "$usage" && exit 0 ;; esac
if (($# < 1 || $# > 2)) || [[ -z "${SLURM_ARRAY_TASK_ID:-}" ]]; then
  echo "$usage" >&2
  exit 2
fi

sweep=$1
shard=$SLURM_ARRAY_TASK_ID
shards=${2:-$SLURM_ARRAY_TASK_COUNT}
if (($# == 1 && SLURM_ARRAY_TASK_MAX != shards)); then
  echo "slurm-array.sh: the array is not 1-$shards; give the number of shards after $sweep" >&2
  exit 2
fi

# In place of this shell, so that it is the sweep that Slurm's signals reach.
exec opc sweep "$sweep" --shard "$shard/$shards" --jobs "${SLURM_CPUS_PER_TASK:-1}" \
  --results "$(basename "$sweep" .toml)-$shard-of-$shards.db"
