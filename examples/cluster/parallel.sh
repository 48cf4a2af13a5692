#!/bin/sh
# parallel.sh [OPTION...]: runs all jobs of PES-0/files.out with GNU parallel, which is given the options.
# Run it again after a failure or an interruption: the job log tells it where to go on.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
list=$("$here/list.sh")
log=PES-0/parallel.joblog
[ -z "$(find PES-0/files.out -newer $log 2>/dev/null)" ] || rm -f $log # it speaks of another list
printf '%s\n' "$list" | parallel --quote --joblog $log --resume-failed "$@" "$here/job.sh" '{}'
