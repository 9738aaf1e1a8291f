#!/bin/sh
# Runs `quor scan` and compares its exit status and what it prints.
#   scan_test.sh QUOR [EMULATOR]
set -u
program=$1
emulator=${2:-}
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
failures=0

quor() { ${emulator:+"$emulator"} "$program" "$@"; }

# expect STATUS TEXT ARGUMENTS...: runs quor; the whole of what it prints on both channels must be TEXT.
expect() {
  status=$1
  text=$2
  shift 2
  printed=$(quor "$@" 2>&1)
  got=$?
  [ "$got" -eq "$status" ] && [ "$printed" = "$text" ] && return
  printf 'quor %s\n' "$*"
  printf 'expected status %s and\n%s\ngot status %s and\n%s\n\n' "$status" "$text" "$got" "$printed"
  failures=$((failures + 1))
}

mkdir market
printf 'date,close\n2024-01-03,2\n2024-01-02,1\n' >market/B.csv
printf 'date,close\n2024-01-02,3\n2024-01-03,1\n2024-01-04,7.5\n' >market/A.CSV
printf 'date,close\n2024-01-02,\n' >market/C,1.csv
echo 'no bars' >market/notes.txt
echo 'M:MA(C,N);UP:C>REF(C,1);' >script.quor

# One row for each security, by name; nulls are no bars of a condition.
expect 0 'security  date               M  UP
A         2024-01-04  4.250000   1
B         2024-01-03  1.500000   1
C,1       2024-01-02      null   0' scan script.quor market --set n=2
expect 0 'security  date        M  UP
A         2024-01-02  3   0
A         2024-01-04  3   1
B         2024-01-03  2   1
B         2024-01-02  1   0
A         2024-01-03  1   0' \
  scan -e 'M:C-(C>7)*4.5;UP:BARPOS>1&&C>REF(C,1);' market/B.csv market/A.CSV --where 'M>0' --last 9 --reverse --sort m
expect 0 'security,date,M,UP
"C,1",2024-01-02,,0
B,2024-01-03,1.5,1
A,2024-01-04,4.25,1' scan script.quor market --set N=2 --csv --reverse
expect 0 '{"rows":[
{"security":"B","key":20240103000000,"X":2}],
"failures":[]}' scan -e 'X:C;' market --where 'C=2' --json --jobs 7
expect 0 'security  date  X' scan -e 'X:C;' market --where 'X>100'

# What fails is named at the end, and nothing else is lost.
printf 'date,close\n2024-01-02,1\n2024-01-02,2\n' >market/D.csv
printf 'date,close\n2024-01-02,many\n' >market/E.csv
expect 1 'security,date,X
A,2024-01-04,7.5
B,2024-01-03,2
"C,1",2024-01-02,
quor: 2 of 5 files failed
  market/D.csv:3: same date as in line 2
  market/E.csv:2: '"'many'"' is no number' scan -e 'X:C;' market --csv
expect 1 'security  date  X
quor: 1 of 1 files failed
  market/B.csv: no column for VOL (13), which the script reads' scan -e 'X:V;' market/B.csv
expect 1 'security  date  X
quor: 1 of 1 files failed
  market/B.csv: the period of STD is negative: -5 ("vector too long") (code 4000)' scan -e 'X:STD(C,0-5);' market/B.csv

# What can't be scanned at all.
expect 1 '-e:2:5: error: nothing defines NOTHING (code 2); declare it above, or as a constant: CONST NOTHING:number;
X:C+NOTHING;
    ^~~~~~~' scan -e 'Y:=C;
X:C+NOTHING;' market
expect 1 'quor: --where Z>1: nothing defines Z (code 2)' scan -e 'X:C;' market --where 'Z>1'
expect 1 "quor: the condition 'X;Y' isn't one plain expression" scan -e 'X:C;' market --where 'X;Y'
expect 1 'quor: the script reads 600000|11, and a scan has data of each security alone' \
  scan -e 'X:"600000$CLOSE";' market
expect 1 'quor: none: no such file or folder' scan -e 'X:C;' none
expect 1 'quor: no files and no folders with bars are given' scan script.quor
expect 1 'quor: --sort Z: the script has no such line' scan -e 'X:C;' market --sort Z
expect 1 'quor: --set N: write NAME=NUMBER, as in --set N=5' scan -e 'X:C;' market --set N
mkdir empty
expect 1 'quor: empty: no file in this folder ends in .csv' scan -e 'X:C;' empty

# Ctrl-C while the second of three files is being read: what was done by then is printed.
if [ -z "$emulator" ]; then
  mkfifo slow.csv
  "$program" scan -e 'X:C;' market/A.CSV slow.csv market/B.csv --jobs 1 --csv >out 2>&1 &
  scan=$!
  exec 3>slow.csv # goes on once the scan has opened the file
  kill -INT "$scan"
  sleep 1 # until the signal has arrived
  printf 'date,close\n2024-01-02,5\n' >&3
  exec 3>&-
  wait "$scan"
  got=$?
  expected='security,date,X
A,2024-01-04,7.5
slow,2024-01-02,5
quor: stopped behind 2 of 3 files'
  if [ "$got" -ne 130 ] || [ "$(cat out)" != "$expected" ]; then
    printf 'after Ctrl-C: status %s and\n%s\n' "$got" "$(cat out)"
    failures=$((failures + 1))
  fi
fi

[ "$failures" -eq 0 ] || echo "$failures failed"
[ "$failures" -eq 0 ]
