#!/bin/sh
# is_done.sh NAME: true when PES-0/NAME.log is the finished result of PES-0/NAME.com as that file stands now.
[ -f "PES-0/$1.log" ] && cmp -s "PES-0/$1.com" "PES-0/$1.in"
