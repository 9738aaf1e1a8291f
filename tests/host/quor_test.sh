#!/bin/sh
# Runs the command-line host and compares its exit status and what it prints.
#   quor_test.sh QUOR SAMPLES [EMULATOR]
set -u
program=$1
samples=$2
emulator=${3:-}
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

# bad_bars TEXT ROWS: a file of bars that is refused with the text.
bad_bars() {
  printf '%b' "$2" >bad.csv
  expect 1 "quor: bad.csv$1" run -e 'A:=C;' --bars bad.csv
}

# Windows line ends, a blank line, a quoted cell, an unknown column, an empty cell, bars out of order.
printf 'Date,open,HIGH,low,Close,note,volume\r\n\r\n' >bars.csv
printf '2024-01-03,1,12,6,"10.5",x,1.001e3\r\n2024-01-02,1,11,4,9.5,,\r\n' >>bars.csv
printf 'date,time,close\n2024-01-02,09:35,1\n2024-01-02,09:40:00,2\n' >minutes.csv

expect 0 'date             MID     VOL2  三
2024-01-02  7.500000     null  15
2024-01-03  9.000000  500.500  18' \
  run --bars bars.csv -e 'MID:=(H+L)/2; VOL2:=V/2; 三:=MID*2; MID>8;'

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
2024-01-02 09:40:00  0.020000' run --bars minutes.csv -e 'TICK:=MINPRICE*2;' --code IF2401 --extra minprice=0.01

# What the file lacks is null, with a warning.
expect 0 'quor: warning: bars.csv has no column for OPI (65), which reads as null
quor: warning: no data for 600000 CLOSE (11), which reads as null
date           A     B
2024-01-03  null  null' run --bars bars.csv --last 1 -e 'A:=OPI+1;B:="600000$CLOSE"*2;'

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

# Statements are counted as the library counts them: blank lines and comments are statements of
# their own, line ends inside one are not.
printf '{ it has\n two lines }\n\nA:=1;// done\nB:=A+\n  2;C1:=3;\n/* x */ D:= C1+nothing;' >bad.quor
expect 1 'error 2: a word that nothing defines: NOTHING
  in statement 6 (the first is 0), line 7: D:= C1+nothing' check bad.quor
expect 1 "error 5: a quote is left open
  in statement 1 (the first is 0), line 1: B:='x" check -e "A:=1;B:='x"
expect 1 'error 9: a reference in double quotes must stand right behind '\'':'\'' or '\''='\''
  in statement 0 (the first is 0), line 1: D:=A"B"' run --bars bars.csv -e 'D:=A"B";'

bad_bars ': no line with the names of the columns' ''
bad_bars ': no bars' 'date,close\n'
bad_bars ":1: the header names no 'date' column" 'close\n1\n'
bad_bars ":1: the header names no 'close' column" 'date,open\n'
bad_bars ':1: two columns are the field VOL (13)' 'date,close,vol,volume\n'
bad_bars ':4: 1 cells instead of 2' 'date,close\n2024-01-02,1\n\n2024-01-03\n'
bad_bars ":3: '1O' is no number" 'date,close\n2024-01-02,1\n2024-01-03,1O\n'
bad_bars ":2: '2024-13-02' is no date" 'date,close\n2024-13-02,1\n'
bad_bars ':3: same date as in line 2' 'date,close\n2024-01-02,1\n20240102,2\n'
bad_bars ':2: a quote is out of place' 'date,close\n2024-01-02,"1"2\n'

expect 1 'quor: none.csv: can'\''t be opened' run -e 'A:=C;' --bars none.csv
expect 1 'quor: --extra UNIT=x: not of the form KEY=NUMBER' check -e 'A:=1;' --extra UNIT=x
expect 2 "quor: no script: give a file or -e 'TEXT'" check
expect 2 'A subcommand is required
Run with --help for more information.'

# Data of another security by the same key, of a longer period up to its next bar.
printf 'date,close\n2024-01-03,7\n' >other.csv
printf 'date,close\n2024-01-01,3\n' >weeks.csv
expect 0 'date           A  B
2024-01-02  null  3
2024-01-03     7  3' run --bars bars.csv -e 'A:="600000$CLOSE"; B:="WEEK$1$CLOSE";' \
  --reference '600000|11=other.csv' --reference 'WEEK1|11=weeks.csv'
expect 1 'quor: --reference 600000|11: the script asks for no such data' \
  run --bars bars.csv -e 'A:=C;' --reference '600000|11=other.csv'

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
[ "$(night -e 'C>3810,NOTICE('\''high'\'');C>3810,BK(3);' --fire --last 0 | head -n 2 | cut -c1-49)" = \
  'notice  2024-01-05 21:15:00  high  {"1":202401052
signal  2024-01-05 21:15:00  row 2  BK 3' ] || failures=1

# A picture; a program built without the means to draw doesn't offer it.
if quor --help | grep -q '^  chart '; then
  expect 0 '' chart --bars bars.csv --out chart.svg \
    -e "MID:(H+L)/2; DRAWTEXT(C>10,H,'<up>'); DRAWNUMBER(C<10,L,C*2,1,COLORRED);"
  # The legend with the value of the last bar, and a mark at one bar of the two each.
  [ "$(sed -n '/MID/,/desc/p' chart.svg)" = 'MID 9.000
&lt;up&gt;
19.0
</desc>' ] || failures=1
  # Values so large that a step of the axis is lost on them once kept it from ending.
  expect 0 '' chart -e 'A:10000000000000000+2*(C>9);' --bars bars.csv --out huge.svg
  # Values, slopes and ratios beyond all bounds.
  expect 0 '' chart --bars bars.csv --out endless.png -e 'HUGE:C*POW(10,300);ENDLESS:HUGE*HUGE;
    DRAWSL(1,C,POW(10,300),HUGE,3,COLORRED),DOT;GOLDENLINE(1,C,1,H,POW(10,300));
    WAVERULER(1,L,1,H,1,C,POW(10,300));DRAWNUMBER(1,ENDLESS,C,2,COLORRED);'
  printf "DRAWTEXT(1,C,'\\377');" >latin.quor
  expect 1 "quor: the drawing records can't be read, texts and numbers stand in them as the script gives \
them: The input is not valid UTF-8" chart latin.quor --bars bars.csv --out chart.svg
  ln -s /dev/full full.svg
  expect 1 "quor: full.svg: can't be written" chart -e 'A:=1;' --bars bars.csv --out full.svg
  expect 2 '--size: Value 10 not in range 200 to 8000
Run with --help for more information.' chart -e 'A:=1;' --bars bars.csv --out chart.svg --size 10x800
  expect 1 'quor: --out chart.gif: neither .svg nor .png' \
    chart -e 'A:=1;' --bars bars.csv --out chart.gif
else
  expect 2 'A subcommand is required
Run with --help for more information.' chart
fi

for script in "$samples"/*.quor; do
  quor run "$script" --bars "$samples/index-daily.csv" --last 1 >/dev/null || failures=1
done
[ $failures -eq 0 ] || exit 1
