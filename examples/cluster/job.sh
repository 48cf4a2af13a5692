#!/bin/sh
# job.sh NAME: computes PES-0/NAME.com, unless that is done. $CALCULATOR (g16 if unset) reads a geometry file and writes
# its output. PES-0/NAME.in is what was computed; NAME.part becomes NAME.log when the calculation has ended well.
# With OWN_CHECKPOINT=1 the job writes PES-0/NAME.chk, whatever %chk line the geometry file has.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
! "$here/is_done.sh" "$1" || exit 0
cd PES-0
rm -f "$1.log"
cp "$1.com" "$1.in"
if [ "${OWN_CHECKPOINT:-0}" = 1 ]; then
  { echo "%chk=$1.chk"; grep -iv '^ *%\(old\)\{0,1\}chk *=' "$1.in"; } >"$1.run"
  ${CALCULATOR:-g16} <"$1.run" >"$1.part"
  rm -f "$1.run"
else
  ${CALCULATOR:-g16} <"$1.in" >"$1.part"
fi
tail -n 1 "$1.part" | grep -q 'Normal termination'
mv "$1.part" "$1.log"
