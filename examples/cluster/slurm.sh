#!/bin/sh
# slurm.sh [OPTION...]: submits what is left of PES-0/files.out as a job array; sbatch is given the options.
# Task n is line n of the list; where the list is longer than an array may be, a task is a run of $per lines.
# AT_ONCE limits the number of tasks that run at a time.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
list=$("$here/list.sh")
total=$(printf '%s\n' "$list" | wc -l)
most=$(scontrol show config | awk '$1 == "MaxArraySize" { print $3 - 1 }')
[ -n "$most" ] || exit 1 # what was wrong, Slurm has said
per=$(((total + most - 1) / most))
tasks=$(
  line=0
  for name in $list; do
    "$here/is_done.sh" "$name" || echo $((line / per + 1))
    line=$((line + 1))
  done | uniq | paste -s -d , -
)
[ -n "$tasks" ] || { echo "all $total jobs are done"; exit 0; }
exec sbatch --array="$tasks${AT_ONCE:+%$AT_ONCE}" "$@" "$here/array.sh" "$here" "$per"
