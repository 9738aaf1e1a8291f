#!/bin/sh
# Ctrl-C ends the studio well.
#   ctrl_c_test.sh QUOR SAMPLES [EMULATOR]
set -u
. "$(dirname "$0")/../host/support.sh"

mkdir page
echo >page/index.html
${emulator:+"$emulator"} "$program" studio --no-open --port 0 --page page >printed.txt 2>&1 &
studio=$!
waited=0
until grep -q 'Ctrl-C ends the studio' printed.txt || [ $waited -eq 60 ]; do
  sleep 1
  waited=$((waited + 1))
done
kill -INT "$studio"
wait "$studio"
same $? 0 'Ctrl-C'
same "$(tail -n 1 printed.txt | tr -d '\r')" 'The studio has ended.' 'Ctrl-C'
[ $failures -eq 0 ] || { cat printed.txt; exit 1; }
