#!/bin/sh
# Runs `quor scan` and compares its exit status and what it prints.
#   scan_test.sh QUOR SAMPLES [EMULATOR]
set -u
. "$(dirname "$0")/support.sh"

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
{"security":"B","date":"2024-01-03","X":2}],
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
  market/E.csv:2: '"'many'"' in the column of CLOSE (11) is no number' scan -e 'X:C;' market --csv
expect 1 'security  date  X
quor: 1 of 1 file failed
  market/B.csv: no column for VOLUME (13), which the script reads' scan -e 'X:V;' market/B.csv
expect 1 '-e:1:9: warning: the period of STD is negative: -5
X:STD(C,0-5);
        ^~~
security  date  X
quor: 1 of 1 file failed
  market/B.csv: the period of STD is negative: -5 ("vector too long") (code 4000)' scan -e 'X:STD(C,0-5);' market/B.csv

# The period is told by the bars of each file, as `run` tells it; --period sets one for all.
printf 'date,close\n2024-01-02 09:35,1\n2024-01-02 09:40,2\n' >minutes.csv
printf 'date,close\n2024-01-05,1\n2024-01-12,2\n' >weeks.csv
expect 0 'security  date                    P
A         2024-01-04 00:00:00  8001
minutes   2024-01-02 09:40:00  3005
weeks     2024-01-12 00:00:00  9001' \
  scan -e 'P:PERIOD*1000+BARINTERVAL;' market/A.CSV minutes.csv weeks.csv
# period_line EXPECTED ARGUMENTS...
period_line() {
  expected=$1
  shift
  same "$(quor scan -e 'X:C;' "$@" 2>&1 >/dev/null)" "$expected" "quor scan $*"
}
told='by the distances of the bars; --period sets another'
period_line "quor: period: day, $told" market/A.CSV market/B.csv
period_line "quor: period: 5min (1 file), day (2 files), $told" market/A.CSV minutes.csv market/B.csv
period_line '' minutes.csv --period 15min

# What a script and a condition lack is told, and what has no effect; a calendar serves a named market.
expect 0 "quor: warning: --set M=1: the script doesn't read M
quor: warning: --extra UNIT=5: the script doesn't read UNIT
quor: warning: --where DAY=2: there is no trading calendar, so DAY gives each bar the date on its clock, not \
its trading day; --calendar gives one, together with --market
-e:1:3: warning: there is no number for MINPRICE, so it is null on every bar; --extra gives one
X:MINPRICE,RED;
  ^~~~~~~~
-e:1:12: warning: RED is no style item and has no effect; did you mean COLORRED?
X:MINPRICE,RED;
           ^~~
security  date                    X
minutes   2024-01-02 09:40:00  null" \
  scan -e 'X:MINPRICE,RED;' minutes.csv --set M=1 --extra UNIT=5 --where DAY=2
printf 'date,close\n2024-01-05 21:05,1\n2024-01-05 21:10,2\n' >TEST.csv
set -- scan -e 'X:DATE+MINPRICE;' TEST.csv --extra minprice=0.5 --calendar "$samples/night-calendar.json"
expect 0 'security  date                            X
TEST      2024-01-05 21:10:00  20240108.500' "$@" --market NIGHT
expect 0 '-e:1:3: warning: there is no trading calendar, so DATE gives each bar the date on its clock, not '\
'its trading day; --calendar gives one, together with --market
X:DATE+MINPRICE;
  ^~~~
security  date                            X
TEST      2024-01-05 21:10:00  20240105.500' "$@"

# What can't be scanned at all.
expect 1 '-e:2:5: error: nothing defines NOTHING (code 2); declare it above, or as a constant: CONST NOTHING:number;
X:C+NOTHING;
    ^~~~~~~' scan -e 'Y:=C;
X:C+NOTHING;' market
expect 1 'quor: --where Z>1: nothing defines Z (code 2)' scan -e 'X:C;' market --where 'Z>1'
expect 1 "quor: the condition 'X;Y' isn't one plain expression" scan -e 'X:C;' market --where 'X;Y'
# Data of another security is the same for all; what a file of bars lacks is told once.
printf 'date,close\n2024-01-03,10\n2024-01-04,20\n' >index.csv
set -- scan -e 'I:="600000$CLOSE";X:C/I;' market/A.CSV market/B.csv
expect 0 'security  date               X
A         2024-01-04  0.375000
B         2024-01-03  0.200000' "$@" --reference 600000=index.csv
expect 0 'quor: warning: no data for 600000 CLOSE (11), which reads as null; --reference gives it
security  date           X
A         2024-01-04  null
B         2024-01-03  null' "$@"
printf 'date|high|last\n2024-01-02|1|2\n' >strange.csv
expect 0 'quor: warning: strange.csv:2: the high 1 is below the close 2
security  date        X
strange   2024-01-02  2' scan -e 'X:C;' strange.csv --column close=last
expect 1 '-e:1:5: warning: RED is no style item and has no effect; did you mean COLORRED?
X:C,RED;Y:=C;
    ^~~
security  date         X
index     2024-01-04  20' scan -e 'X:C,RED;Y:=C;' index.csv --strict
expect 0 'security  date         Y
index     2024-01-04  21' scan -e 'X:C;Y:=C+1;' index.csv --columns Y

expect 1 'quor: none: no such file or folder' scan -e 'X:C;' none
misused 'no files and no folders with bars are given' scan script.quor
misused '--sort Z: the script has no such line' scan -e 'X:C;' market --sort Z
misused '--set N: write NAME=NUMBER, as in --set N=5' scan -e 'X:C;' market --set N
mkdir other
cp market/B.csv other
misused 'other/B.csv and market/B.csv: two files are of security B' scan -e 'X:C;' market other
misused 'market/B.csv: is given twice' scan -e 'X:C;' market market/B.csv
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
  expected='quor: period: day, by the distances of the bars; --period sets another
security,date,X
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
