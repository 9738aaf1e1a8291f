#!/bin/sh
# Runs `quor watch` and compares its exit status and what it prints.
#   watch_test.sh QUOR SAMPLES [EMULATOR]
set -u
. "$(dirname "$0")/support.sh"
daily=$samples/index-daily.csv

# watches STATUS TEXT ARGUMENTS...: the same as expect, with bars.csv through a pipe.
watches() {
  status=$1
  text=$2
  shift 2
  printed=$(quor watch -q "$@" <bars.csv 2>&1)
  got=$?
  [ "$got" -eq "$status" ] && [ "$printed" = "$text" ] && return
  printf 'quor watch %s\nexpected status %s and\n%s\ngot status %s and\n%s\n\n' "$*" "$status" "$text" "$got" "$printed"
  failures=$((failures + 1))
}

# A line of the same date replaces the bar, whose signal stands until it goes; the last line needs no
# end at the end of a pipe. Signals are told once, and again when they come back.
printf 'date,close\n2024-01-02 09:35,1\n2024-01-02 09:35,3\n2024-01-02 09:35,3\n' >bars.csv
printf '2024-01-02 09:35,1\n2024-01-02 09:35,2\n2024-01-02 09:40,1\n2024-01-02 09:45,5' >>bars.csv
script="A:SUM(C,0);N:=C;C>1,BK(2);C>4,NOTICE('high');"
watches 0 'date,A
2024-01-02 09:35:00,1
2024-01-02 09:35:00,3
signal  2024-01-02 09:35:00  row 0  BK 2
2024-01-02 09:35:00,3
2024-01-02 09:35:00,1
2024-01-02 09:35:00,2
signal  2024-01-02 09:35:00  row 0  BK 2
2024-01-02 09:40:00,3
2024-01-02 09:45:00,8
signal  2024-01-02 09:45:00  row 2  BK 2
notice  2024-01-02 09:45:00  row 2  high' -e "$script" -b - --csv
watches 0 '{"date":"2024-01-02 09:35:00","A":2,"N":2}
{"date":"2024-01-02 09:35:00","event":"BK","quantity":2}
{"date":"2024-01-02 09:40:00","A":3,"N":1}' -e "$script" -b - --json --all --finished
sed 's/ 09:..//' bars.csv | sed -n '1,3p;8p' | sed 's/2,5/3,5/' >days.csv && mv days.csv bars.csv
watches 0 'date                 A
2024-01-02           1
2024-01-02           3
2024-01-03           8
notice  2024-01-03  row 1  high' -e "A:SUM(C,0);C>4,NOTICE('high');" -b -

# Bars that come late are put in their place, and what lies behind them is calculated again.
printf 'date,close\n2024-01-02,1\n2024-01-04,3\n2024-01-03,2\n2024-01-05,4\n' >bars.csv
same "$(quor watch -e 'A:SUM(C,0);' -b - --csv <bars.csv 2>&1)" 'quor: period: day, by the distances of the bars; --period sets another
date,A
2024-01-02,1
2024-01-04,4
quor: warning: the bar of 2024-01-03 00:00:00 comes behind a later one
2024-01-03,3
2024-01-05,10' 'a late bar'

# What is wrong ends it.
printf 'date,close\n2024-01-02,1\n2024-01-03,x\n' >bars.csv
watches 1 "quor: standard input:3: 'x' in the column of CLOSE (11) is no number" -e 'A:C;' -b -
printf 'date,close\n2024-01-02,1\n2024-01-03,2\n' >bars.csv
watches 1 'date,A
2024-01-02,
-e:1:9: error: the period of STD was negative at a bar ("vector too long") (code 4000); keep it above 0, such as MAX(...,1)
A:STD(C,(C<2)*7-5);
        ^~~~~~~~~' -e 'A:STD(C,(C<2)*7-5);' -b - --csv
: >bars.csv
watches 1 'quor: standard input: is empty' -e 'A:C;' -b -
expect 1 'quor: none.csv: there is no such file' watch -e 'A:C;' none.csv
expect 1 '-e:1:3: error: nothing defines X (code 2); declare it above, or as a constant: CONST X:number;
A:X;
  ^' watch -e 'A:X;' "$daily"

# Bar by bar the same values as over all of them, to the last bit.
for script in "$samples"/*.quor "$samples"/cookbook/*.quor; do
  quor run "$script" -b "$daily" --csv -q --all >whole.csv
  quor watch "$script" -b - --csv -q --all <"$daily" >watched.csv 2>/dev/null
  cmp -s whole.csv watched.csv || same 'other values' 'those of quor run' "quor watch $script"
done
quor run "$samples/night.quor" -b "$samples/night.csv" --csv -q --all >whole.csv 2>/dev/null
quor watch "$samples/night.quor" -b - --csv -q --all <"$samples/night.csv" >watched.csv 2>/dev/null
cmp -s whole.csv watched.csv || same 'other values' 'those of quor run' 'quor watch of bars within the day'

# Words that see later bars, or the last one, at bars that formed first: as a run up to each bar.
cat >late.quor <<'END'
Z:ZIGZAG(C,3,1);
P:PEAK(C,3,1,1);
R:REF(Z,1);
F:FILTER(C>REF(C,1),3);
G:REF(F,1);
LASTS:REF(ISLASTBAR,1);
E:EMAWH(C,5);
B:BACKSET(C>REF(C,1),2);
N:CURRBARSCOUNT;
W:WAVEPEAK(3);
S:SUM(C>REF(C,1),5);
X:COUNT(FILTER(C>O,3),10);
END
quor check late.quor >/dev/null 2>&1 || same 'an error' 'a sound script' late.quor
head -n 61 "$daily" >start.csv
awk -F, -v OFS=, 'NR <= 61 { next }
  { close_ = $5; for (i = -2; i < 3; ++i) { $5 = close_ * (1 + i * 0.01); print } $5 = close_; print }' "$daily" |
  head -n 180 >ticks.csv
cat start.csv ticks.csv | quor watch late.quor -b - --csv -q 2>/dev/null |
  awk -F, '$1 != date && NR > 1 { print line } { date = $1; line = $0 } END { print line }' >watched.csv
for bars in 62 63 70 75 89 91; do
  whole=$(head -n "$bars" "$daily" | quor run late.quor -b - --csv -q -n 1 2>/dev/null | tail -n 1)
  same "$(grep "^${whole%%,*}," watched.csv)" "$whole" "quor watch at bar $bars"
done

# The events of such a script are told once, too.
printf 'date,close\n2024-01-02,1\n2024-01-03,2\n2024-01-03,2\n2024-01-04,3\n2024-01-04,4\n' >bars.csv
watches 0 'date,N
2024-01-02,1
2024-01-03,1
signal  2024-01-03  row 1  BK
notice  2024-01-03  row 1  up
2024-01-03,1
2024-01-04,1
signal  2024-01-04  row 2  BK
2024-01-04,1' -e "N:CURRBARSCOUNT;C>1,BK;C>1,NOTICE('up');" -b - --csv

# A file that grows: a line counts once its end is there; the bars of the past raise nothing.
if [ -z "$emulator" ]; then
  wait_for() { # until a file holds a text, for two minutes
    for _ in $(seq 2400); do
      grep -q "$2" "$1" && return
      sleep 0.05
    done
    same "$(cat "$1")" "a line with $2" "$1"
  }
  printf 'date,close\n2024-01-02,1\n2024-01-03,2\n2024-01-04,3\n' >grow.csv
  : >out
  "$program" watch -e 'A:C;C>REF(C,1),BK;' grow.csv -n 2 -q --csv >out 2>&1 &
  watch=$!
  wait_for out 2024-01-04
  printf '2024-01-05' >>grow.csv
  sleep 0.2
  printf ',4\n2024-01-' >>grow.csv
  wait_for out 2024-01-05,4
  sleep 0.2
  printf '08,1\n' >>grow.csv
  wait_for out 2024-01-08
  kill -INT "$watch"
  wait "$watch"
  same "$? $(cat out)" '0 date,A
2024-01-03,2
2024-01-04,3
2024-01-05,4
signal  2024-01-05  row 3  BK
2024-01-08,1' 'a file that grows, and Ctrl-C'

  # Whether the last bar of a file is finished isn't known.
  printf 'date,close\n2024-01-02,1\n2024-01-03,2\n2024-01-04,3\n' >grow.csv
  : >out
  "$program" watch -e 'A:C;C>REF(C,1),BK;' grow.csv -q --csv --finished >out 2>&1 &
  watch=$!
  wait_for out 2024-01-03
  printf '2024-01-04,4\n2024-01-05,5\n' >>grow.csv
  wait_for out 2024-01-04
  wait_for out signal
  kill "$watch"
  wait "$watch"
  same "$? $(cat out)" '0 date,A
2024-01-02,1
2024-01-03,2
2024-01-04,4
signal  2024-01-04  row 2  BK' 'finished bars of a file, and a polite kill'

  for end in 'rm' 'mv -f other.csv' 'cp short.csv'; do
    printf 'date,close\n2024-01-02,1\n2024-01-03,2\n' | tee grow.csv >other.csv
    head -n 1 grow.csv >short.csv
    : >out
    "$program" watch -e 'A:C;' grow.csv -q >out 2>&1 &
    watch=$!
    wait_for out 2024-01-03
    $end grow.csv
    wait "$watch"
    got=$?
    case $end in
    rm) fate='is gone' ;;
    mv*) fate='is another file now' ;;
    cp*) fate='is shorter than it was' ;;
    esac
    same "$got $(tail -n 1 out)" "1 quor: grow.csv: $fate" "$end"
  done

  # Ctrl-C while a pipe is silent, which was opened once: a second time would end who writes.
  mkfifo pipe
  : >out
  "$program" watch -e 'A:C;' -b pipe -q --csv >out 2>&1 &
  watch=$!
  exec 3>pipe
  printf 'date,close\n2024-01-02,1\n2024-01-03' >&3
  wait_for out 2024-01-02
  kill -INT "$watch"
  wait "$watch"
  same "$? $(tail -n 1 out)" '0 2024-01-02,1' 'Ctrl-C at a silent pipe'
  exec 3>&-
fi

[ $failures -eq 0 ] || exit 1
