#!/bin/sh
# Runs the program on one example of each group and checks the frequencies that its info block leads to: with the derived
# points against all points computed one by one, and against the Hessian that xtb makes itself.
# Exit status: 0 all agree, 1 some do not, 77 xtb is not installed.
# PROGRAM and ASSEMBLER name the programs to test if they are not those of the release build; PYTHON a Python.
set -u
here=$(cd "$(dirname "$0")" && pwd)
examples=$(dirname "$here")
program=${PROGRAM:-$(dirname "$examples")/build/release/bin/displacement_generator}
[ -x "$program" ] || program=$(command -v displacement_generator) || program=${PROGRAM:-displacement_generator}
case $program in /*) ;; *) program=$PWD/$program ;; esac

assembler=${ASSEMBLER:-$(dirname "$program")/displacement_assembler}
PROGRAM=$program ASSEMBLER=$assembler
export PROGRAM ASSEMBLER

command -v xtb >/dev/null || { echo "skipped: xtb is not installed"; exit 77; }
for needed in "$program" "$assembler"; do
  [ -x "$needed" ] || { echo "$needed: not found; build it first, or name it in PROGRAM or ASSEMBLER" >&2; exit 1; }
done

work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
trap 'exit 1' INT TERM
status=0
check() { # EXAMPLE OPTION...
  example=$1
  shift
  rm -f "$work/out"
  cp -r "$examples/$example" "$work/$example" || exit 1
  if (cd "$work/$example" && rm -rf PES-0 && "$program" control) &&
     "${PYTHON:-python3}" "$here/frequencies.py" "$@" "$work/$example" >"$work/out" 2>&1; then
    echo "$example"
    grep 'displacements computed' "$work/out"
    grep 'largest difference' "$work/out"
  else
    echo "FAILED: $example"
    [ ! -f "$work/out" ] || cat "$work/out"
    status=1
  fi
}
check bromochlorofluoromethane --all --hess
check hypochlorous-acid --all --hess
check hydrogen-peroxide --all # no minimum of xtb's, so its own Hessian says nothing
check formaldehyde --all --hess
check ethylene --all --hess
check 1-2-dichloro-1-2-difluoroethane --all --hess
check trans-1-2-dichloroethylene --all --hess
check twistane --all --hess
exit $status
