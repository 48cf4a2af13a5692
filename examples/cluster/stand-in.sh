#!/bin/sh
# A stand-in for a quantum-chemistry program, to try the scripts with. It takes no time to speak of, and of seven geometries one
# stops with an error and one ends too early, each the first time only.
set -eu
geometry=$(cat)
number=$(printf '%s\n' "$geometry" | cksum | cut -d ' ' -f 1)
sleep "${SECONDS_EACH:-0.1}"
echo "a stand-in for the output of geometry $number"
if [ $((number % 7)) -lt 2 ] && [ ! -e "stand-in.$number" ]; then
  : >"stand-in.$number"
  exit $((number % 7))
fi
echo "Normal termination of the stand-in"
