#!/bin/sh
# Prints the names of the geometries to compute: the lines of PES-0/files.out between the three head lines and the info block.
set -eu
files=PES-0/files.out
grep -qsx End_vesk_info $files || {
  echo "$files: missing, or without End_vesk_info; run displacement_generator to its end first" >&2
  exit 1
}
awk 'NR > 3 { if ($1 == "Begin_vesk_info") exit; print $1 }' $files
