#!/bin/sh
# Runs the command-line host and compares its exit status and what it prints.
#   quor_test.sh QUOR SAMPLES [EMULATOR]
set -u
. "$(dirname "$0")/support.sh"

# bad_bars TEXT ROWS: a file of bars that is refused with the text.
bad_bars() {
  printf '%b' "$2" >bad.csv
  expect 1 "quor: bad.csv$1" run -e 'A:=C;' --bars bad.csv
}

# Windows line ends, a blank line, a quoted cell, an unknown column, an empty cell, bars out of order.
printf 'Date,open,HIGH,low,Close,note,volume\r\n\r\n' >bars.csv
printf '2024-01-03,7,12,6,"10.5",x,1.001e3\r\n2024-01-02,5,11,4,9.5,,\r\n' >>bars.csv
printf 'date,time,close\n2024-01-02,09:35,1\n2024-01-02,09:40:00,2\n' >minutes.csv

expect 0 'date             MID     VOL2  三
2024-01-02  7.500000     null  15
2024-01-03  9.000000  500.500  18' \
  run --bars bars.csv -e 'MID:=(H+L)/2; VOL2:=V/2; 三:=MID*2;'

# Only the last bar, of an average over as many bars as a parameter says: (9.5 + 10.5) / 2.
echo '[{"param_name":"n","default":2}]' >params.json
echo 'avg:ma(c,n),colorred; // drawn
' >script.quor
expect 0 'date        AVG
2024-01-03   10' run script.quor --params params.json --bars bars.csv --last 1
expect 0 'date           X
2024-01-02  null
2024-01-03    21' run -e 'X:=C*2;' --bars bars.csv --from 1

expect 0 'date                     TICK
2024-01-02 09:35:00  0.020000
2024-01-02 09:40:00  0.020000' run --bars minutes.csv --period 0x3005 -e 'TICK:=MINPRICE*2;' --code IF2401 --extra minprice=0.01

# What the file lacks is null, with a warning.
expect 0 'quor: warning: bars.csv has no column for OPENINTEREST (65), which reads as null
quor: warning: no data for 600000 CLOSE (11), which reads as null; --reference gives it
date           A     B
2024-01-03  null  null' run --bars bars.csv --last 1 -e 'A:=OPI+1;B:="600000$CLOSE"*2;'

printf 'date,close,volume\n2024-01-02,1,2147483648\n2024-01-03,2,7\n' >marks.csv
expect 0 'quor: warning: marks.csv has 2147483648 or 4294967295 for VOLUME (13), which read as null
date           A
2024-01-02  null
2024-01-03     7' run --bars marks.csv -e 'A:V;'

expect 0 'The script is sound.
  lines             AVG (20000)
  functions         MA, POLYLINE
  drawings          PolylineShape
  look-back         2 bars
  fields            CLOSE (11)
  other securities  none
  other periods     none
  quotes            none
  market constants  none
  calendar          none
  notices           none' check script.quor --params params.json

# What is wrong, where, and what to write instead, as compilers print it.
printf '{ it has\n two lines }\n\nA:=1;// done\nB:=A+\n  2;C1:=3;\n/* x */\tD:= C1+nothing;\n' >bad.quor
expect 1 'bad.quor:7:16: error: nothing defines nothing (code 2); declare it above, or as a constant: CONST nothing:number;
/* x */	D:= C1+nothing;
       	       ^~~~~~~' check bad.quor
expect 1 "-e:1:9: error: this quote is left open (code 5); close it with '
A:=1;B:='x
        ^" check -e "A:=1;B:='x"
expect 1 '-e:1:9: error: the period of STD is negative: -5 ("vector too long") (code 4000)
A:STD(C,0-5);
        ^~~' run --bars bars.csv -e 'A:STD(C,0-5);'
expect 0 "-e:1:5: warning: '^' is no operator; write POW(x,y) for a power
A:=C^2;B:=MA(C,3);
    ^
-e:1:16: warning: the period of MA is 3, there are only 2 bars
A:=C^2;B:=MA(C,3);
               ^
date         A     B
2024-01-03  -2  null" run --bars bars.csv --last 1 -e 'A:=C^2;B:=MA(C,3);'
[ "$(quor check --json -e 'A:CLOES;' 2>/dev/null | tail -n 1)" = '"findings":[{"severity":"error","line":1,"column":3,'\
'"length":5,"code":2,"sentence":"nothing defines CLOES","suggestion":"did you mean CLOSE?"}]}' ] || failures=1
quor check --strict -e 'A:C^2;' >/dev/null 2>&1 && failures=1
quor check --strict -e 'A:C;' >/dev/null 2>&1 || failures=1
# A healthy script is told nothing of calendars, nor of the time that notices stamp.
expect 0 'date  AVERAGE  MA10' \
  run "$samples/night.quor" --bars "$samples/index-daily.csv" --last 0
expect 0 '-e: warning: there are several bars a day, but their period is said to be a day or longer; name the period of the bars
date                        A
2024-01-02 09:40:00  20240102' run --bars minutes.csv --period 0x4000 --last 1 -e 'A:=DATE;'

bad_bars ': is empty' ''
bad_bars ': no line with the names of the columns' '\n'
bad_bars ': no bars' 'date,close\n'
bad_bars ":1: the header names no 'date' column; it names close" 'close\n1\n'
bad_bars ":1: the header names no 'close' column; it names date, open" 'date,open\n'
bad_bars ':1: two columns are the field VOLUME (13)' 'date,close,vol,volume\n'
bad_bars ':4: 1 cells instead of 2' 'date,close\n2024-01-02,1\n\n2024-01-03\n'
bad_bars ":3: '1O' in the column of CLOSE (11) is no number" 'date,close\n2024-01-02,1\n2024-01-03,1O\n'
bad_bars ":2: '2024-13-02' is no date; no calendar and no clock has it" 'date,close\n2024-13-02,1\n'
bad_bars ':3: same date as in line 2' 'date,close\n2024-01-02,1\n20240102,2\n'
bad_bars ':2: a quote is out of place' 'date,close\n2024-01-02,"1"2\n'

expect 1 'quor: none.csv: there is no such file' run -e 'A:=C;' --bars none.csv
for text in UNIT=x UNIT=nan UNIT MINPRCE=0.01 =1; do
  misused "--extra $text: write MINPRICE=NUMBER, UNIT=NUMBER or SHARECOUNTPERUNIT=NUMBER" \
    check -e 'A:=1;' --extra "$text"
done
misused '--extra unit=2: UNIT is given twice' check -e 'A:=UNIT;' --extra UNIT=1 --extra unit=2
misused "no script: give a file or -e 'TEXT'" check

# Data of another security by the same key; of a longer period the last bar that is over by the
# bar's own date, or the one that it lies in. A source may be named with its field, or by a word for its period.
printf 'date,close\n2024-01-03,7\n' >other.csv
printf 'date,close\n2023-12-26,2\n2024-01-01,3\n' >weeks.csv
set -- run --bars bars.csv -e 'A:="600000$CLOSE"; B:="WEEK$1$CLOSE";' --reference '600000|11=other.csv'
expect 0 'date           A  B
2024-01-02  null  2
2024-01-03     7  2' "$@" --reference 'WEEK1|11=weeks.csv'
expect 0 'date           A  B
2024-01-02  null  3
2024-01-03     7  3' "$@" --reference 'weekly=weeks.csv' --forming
# A day is over at midnight, whatever the hour of its date; an hour so long behind its date.
printf 'date,close\n2024-01-02 09:30,1\n2024-01-02 10:29,2\n2024-01-02 10:30,3\n2024-01-03 00:00,4\n' >quarters.csv
printf 'date,close\n2023-12-29 15:00,5\n2024-01-02 15:00,6\n2024-01-03,7\n' >days.csv
printf 'date,close\n2024-01-02 09:30,8\n2024-01-02 10:30,9\n' >hours.csv
expect 0 'date                 D  HOURS
2024-01-02 09:30:00  5   null
2024-01-02 10:29:00  5   null
2024-01-02 10:30:00  5      8
2024-01-03 00:00:00  6      9' run -e 'D:"DAY$1$CLOSE";HOURS:"HOUR$1$CLOSE";' -b quarters.csv --period 15min \
  --reference DAY1=days.csv --reference HOUR1=hours.csv
printf 'date,close\n2023-12-29,7\n' >past.csv
expect 0 'quor: warning: --reference 600000|11=past.csv has no value at the times of the bars
date  A' run --bars bars.csv --last 0 -e 'A:="600000$CLOSE";' --reference '600000|11=past.csv'
misused '--reference 600000|11=other.csv: the script asks for no such data' \
  run --bars bars.csv -e 'A:=C;' --reference '600000|11=other.csv'
misused '--reference 600000|X=other.csv: no field is called X' \
  run --bars bars.csv -e 'A:="600000$CLOSE";' --reference '600000|X=other.csv'

# A night session: its bars belong to the next trading day; notices and signals in their order.
night() {
  quor run --bars "$samples/night.csv" --period 0x3005 --code TEST --market NIGHT \
    --calendar "$samples/night-calendar.json" "$@" 2>/dev/null
}
[ "$(night -e 'D:=DATE;' --last 144 | awk 'NR > 1 { print $1, $3 }' | uniq -c | tr -s ' ' '|')" = \
  '|24|2024-01-05|20240108
|48|2024-01-08|20240108
|24|2024-01-08|20240109
|48|2024-01-09|20240109' ] || failures=1
[ "$(night -e 'C>3810,NOTICE('\''high'\'');C>3810,BK(3);' --fire --last 0 | head -n 2)" = \
  'notice  2024-01-05 21:15:00  row 2  high
signal  2024-01-05 21:15:00  row 2  BK 3' ] || failures=1

# Events are a part of JSON; beside comma-separated values they go to the error output.
same "$(quor run -q --bars bars.csv -e 'C>0,BK(2);' --fire --json | tail -n 3)" '"events":[
{"date":"2024-01-02","event":"BK","quantity":2},
{"date":"2024-01-03","event":"BK","quantity":2}]}' 'run --fire --json'
quor run --bars bars.csv -e 'C>0,BK;' --fire --csv >/dev/null 2>events.txt
same "$(grep -c '^signal' events.txt)" 2 'signals beside comma-separated values'

# What a script asks for and the user doesn't give. The library asks for named securities alone.
lacks_calendar='-e:1:3: warning: there is no trading calendar, so DATE gives each bar the date on its clock, not '\
'its trading day; --calendar gives one, together with --code and --market
A:DATE;
  ^~~~'
calendar=$samples/night-calendar.json
set -- run --bars "$samples/night.csv" --last 0
expect 0 "$lacks_calendar
date  A" "$@" -e 'A:DATE;'
expect 0 "$lacks_calendar
date  A" "$@" -e 'A:DATE;' --calendar "$calendar" --code TEST
expect 1 "$lacks_calendar
date  A" "$@" -e 'A:DATE;' --calendar "$calendar" --market NIGHT --strict
expect 0 'date  A' "$@" -e 'A:DATE;' --calendar "$calendar" --code TEST --market NIGHT
expect 0 'date  A' "$@" -e 'A:TIME;'
expect 0 'date  A' run -e 'A:DATE;' --bars bars.csv --last 0
lacks_number='-e:1:3: warning: there is no number for MINPRICE, so it is null on every bar; --extra gives one
A:MINPRICE*C;
  ^~~~~~~~'
expect 0 "$lacks_number
date  A" run -e 'A:MINPRICE*C;' --bars bars.csv --last 0
expect 0 'date               A
2024-01-03  5.250000' run -e 'A:MINPRICE*C;' --bars bars.csv --last 1 --extra MINPRICE=0.5
expect 0 "quor: warning: --extra UNIT=5: the script doesn't read UNIT
date  A" run -e 'A:MINPRICE*C;' --bars bars.csv --last 0 --extra MINPRICE=1 --code IF --extra UNIT=5

# texts FILE.svg: the texts of a picture, one in a line.
texts() {
  sed -n 's/^<text[^>]*>\(.*\)<\/text>$/\1/p' "$1"
}

# shows FILE.svg TEXT...: whether each of the texts stands in the picture, as a whole line.
shows() {
  picture=$1
  shift
  for text in "$@"; do
    texts "$picture" | grep -qxF -e "$text" && continue
    printf '%s lacks %s\n' "$picture" "$text"
    failures=$((failures + 1))
  done
}

# lacks FILE.svg TEXT: whether no line of the picture begins with the text.
lacks() {
  texts "$1" | grep -q "^$2" || return 0
  printf '%s has %s\n' "$1" "$2"
  failures=$((failures + 1))
}

# The time that programs had taken when `times` wrote it down; it doesn't count in a subshell.
processor_seconds() {
  awk 'NR == 2 { split($1, time, /[ms]/); print int(time[1] * 60 + time[2]) }' times.txt
}

daily_chart() {
  expect 0 '' chart --bars "$samples/index-daily.csv" "$@"
}

# Pictures.
# A PNG wants more than an SVG, and a program may be built without it.
png=
if ! quor chart -e 'A:C;' --bars bars.csv --out a.png 2>&1 | grep -q 'draws no PNG'; then
  png=endless.png
  same "$(head -c 4 a.png | tail -c 3)" PNG 'a picture a.png'
fi

expect 0 '' chart --bars bars.csv --out chart.svg \
  -e "MID:(H+L)/2; DRAWTEXT(C>10,H,'<up>'); DRAWNUMBER(C<10,L,C*2,1,COLORRED);"
# A mark at one bar of the two each; the legend with the value of the last bar.
shows chart.svg bars Daily 2024-01-03 '&lt;up&gt;' 19.0 'MID 9.00'

# Title, last price, decimals of the prices, large numbers, months; the volume where there's room.
daily_chart --out a.svg -e 'MA5:MA(C,5);'
shows a.svg index-daily Daily 2020-04-17 2874.56 '+75.01 (+2.68%)' 'MA5 2813.03' 'Volume 5.79B' 8B \
  2020 Feb
daily_chart --out a.svg --no-volume -e 'MA5:MA(C,5);'
lacks a.svg Volume
daily_chart --out a.svg --period 0x5001 --code IX500 --market TEST \
  -e 'OBV:SUM(IF(C>REF(C,1),V,IF(C<REF(C,1),-V,0)),0);'
shows a.svg 'IX500 · TEST' Weekly 'OBV 1.10T'
lacks a.svg Volume
# A level has its value on the axis, in the panel of the lines around it, written before or behind.
daily_chart --out a.svg --last 5 -e \
  'WEAK:30;R:SMA(MAX(C-REF(C,1),0),6,1)/SMA(ABS(C-REF(C,1)),6,1)*100;STRONG:70;'
shows a.svg 30 70 'R 70.48' 'WEAK 30.00' 'STRONG 70.00'
# Signals have their words.
daily_chart --out a.svg -e 'C>REF(C,1)*1.03,BK(2);C<REF(C,1)*0.97,SPK;H=HHV(H,60),CLOSEOUT;'
shows a.svg 'BK 2' SPK CLOSEOUT
quor chart --bars "$samples/night.csv" --period 0x3005 --out a.svg -e 'A:C;'
shows a.svg '5 min' '2024-01-09 15:00' 'Jan 9' 21:05 'Volume 541'

expect 0 "$lacks_number" chart --bars bars.csv --out a.svg -e 'A:MINPRICE*C;'

# The grounds of both themes, the size.
daily_chart --out a.svg --theme dark --size 1600x900 -e 'A:C,COLORBLACK;'
grep -q 'width="1600" height="900"' a.svg || failures=$((failures + 1))
same "$(sed -n 's/^<polygon.*0,900" fill="\(.*\)".*/\1/p' a.svg)" '#131722' 'the dark ground'
expect 2 'quor: --theme: blue not in {light,dark}
quor chart --help tells more' chart -e 'A:=1;' --bars bars.csv --out a.svg --theme blue

# Far more bars than pixels. Processor time, since other work may keep the clock waiting; a build for
# the sanitizers takes ten times as long.
awk 'BEGIN {
  print "date,time,open,high,low,close,volume"
  for (i = 0; i < 200000; ++i) {
    day = int(i / 480); minute = i % 480; price = 100 + 50 * sin(i / 9000) + 5 * sin(i / 17)
    printf "%d-%02d-%02d,%02d:%02d,%.2f,%.2f,%.2f,%.2f,%d\n", 2020 + int(day / 336),
      int(day / 28) % 12 + 1, day % 28 + 1, 9 + int(minute / 60), minute % 60,
      price, price + 1, price - 1, price + sin(i), 100 + i % 900
  }
}' >long.csv
times >times.txt
before=$(processor_seconds)
expect 0 '' chart --bars long.csv --period 0x3000 --last 200000 --out long.svg \
  -e 'MA20:MA(C,20); C>O,BK; C<O,SK; DRAWNUMBER(C>O,H,C,2,COLORRED); DRAWLINE(C>O,L,C>O,H,COLORBLUE);'
times >times.txt
took=$(($(processor_seconds) - before))
[ $took -le 20 ] || { echo "200,000 bars took $took s"; failures=$((failures + 1)); }
[ "$(wc -c <long.svg)" -lt 30000000 ] || failures=$((failures + 1))
shows long.svg '1 min' 2021
# Values so large that a step of the axis is lost on them once kept it from ending.
expect 0 '' chart -e 'A:10000000000000000+2*(C>9);' --bars bars.csv --out huge.svg
# Values, slopes and ratios beyond all bounds.
for picture in endless.svg $png; do
  expect 0 '' chart --bars bars.csv --out $picture -e 'HUGE:C*POW(10,300);ENDLESS:HUGE*HUGE;
  DRAWSL(1,C,POW(10,300),HUGE,3,COLORRED),DOT;GOLDENLINE(1,C,1,H,POW(10,300));
  WAVERULER(1,L,1,H,1,C,POW(10,300));DRAWNUMBER(1,ENDLESS,C,2,COLORRED);'
done
same "$(grep -c 'nan\|inf' endless.svg)" 0 'numbers without bounds in a picture'
expect 0 '' chart -e "DRAWTEXT(1,C,'\\');" --bars bars.csv --out chart.svg
shows chart.svg '\'
ln -s /dev/full full.svg
expect 1 "quor: full.svg: can't be written" chart -e 'A:=1;' --bars bars.csv --out full.svg
expect 2 'quor: --size: Value 10 not in range 200 to 8000
quor chart --help tells more' chart -e 'A:=1;' --bars bars.csv --out chart.svg --size 10x800
misused '--out chart.gif: neither .svg nor .png' \
  chart -e 'A:=1;' --bars bars.csv --out chart.gif

same "$(quor chart -q -e 'A:C;' --bars bars.csv --out - | head -c 4)" '<svg' 'a picture on the output'

for script in "$samples"/*.quor; do
  quor run "$script" --bars "$samples/index-daily.csv" --last 1 >/dev/null || failures=1
done
[ $failures -eq 0 ] || exit 1
