#!/bin/sh
#SBATCH --job-name=displacements
#SBATCH --output=PES-0/slurm.out
#SBATCH --open-mode=append
# array.sh FOLDER PER: one task of the array that slurm.sh submits. FOLDER holds these scripts: Slurm runs a copy of this one.
set -u
first=$(((SLURM_ARRAY_TASK_ID - 1) * $2 + 1))
status=0
list=$("$1/list.sh") || exit 1
for name in $(printf '%s\n' "$list" | sed -n "$first,$((first + $2 - 1))p"); do
  "$1/job.sh" "$name" || { echo "$name: failed in task $SLURM_ARRAY_TASK_ID"; status=1; }
done
exit $status
