#!/bin/sh
# What the command-line host takes and what it says of mistakes, its help, and the manual page and
# completions that must know the same options.
#   options_test.sh QUOR SAMPLES [EMULATOR]
set -u
. "$(dirname "$0")/support.sh"
share=$samples/../host/share
# A program may be built without the studio.
has() { quor --help | grep -q "^  $1 "; }
commands="check, run, chart, scan, watch, format, lsp, $(! has studio || echo 'studio, ')help"

# Numbers for parameters: the option beats the file, and what has no effect is told.
printf 'date,close\n2024-01-02,1\n2024-01-03,2\n2024-01-04,4\n' >bars.csv
echo '[{"PARAM_NAME":"N","DEFAULT":3},{"PARAM_NAME":"M","DEFAULT":10}]' >params.json
echo '[]' >none.json
echo '{"N":3}' >wrong.json
expect 0 'date         A
2024-01-04  13' run -e 'A:=MA(C,N)+M;' --bars bars.csv --params params.json --set n=2 --last 1
expect 0 'date        A
2024-01-04  3' run -e 'A:=MA(C,N);' --bars bars.csv --params none.json --set N=2 --last 1
expect 0 'quor: warning: --set M=1: the script doesn'\''t read M
quor: warning: --set N=2: the script'\''s own CONST N stands
quor: warning: --set C=2.5: this hides the bar field C
date               A
2024-01-04  2.500000' run -e 'CONST N:3;A:=MA(C,N);' --bars bars.csv --set M=1 --set N=2 --set C=2.5 --last 1
misused '--set N: write NAME=NUMBER, as in --set N=5' check -e 'A:N;' --set N
misused '--set n=3: N is set twice' run -e 'A:N;' --bars bars.csv --set N=2 --set n=3
misused '--set N=3: N is set twice' scan -e 'A:N;' bars.csv --set N=2 --set N=3
misused '--set N=0.0000004: six decimals are kept, which makes it 0.000000' \
  check -e 'A:N;' --set N=0.0000004
expect 0 'date        A
2024-01-04  1' run -e 'A:=C*N=4*0.123456;' --bars bars.csv --set N=0.123456 --last 1
expect 1 'quor: wrong.json: not of the form [{"PARAM_NAME":"N","DEFAULT":5}, ...]' \
  check -e 'A:N;' --params wrong.json

# period_of EXPECTED DATES...: what the distances between the dates are taken for.
period_of() {
  expected=$1
  shift
  { echo date,close; printf '%s,1\n' "$@"; } >period.csv
  printed=$(quor run -e 'A:=C;' --bars period.csv --last 0 2>&1 >/dev/null)
  same "$printed" "quor: period: $expected; --period sets another" "bars at $*"
}
told=', by the distances of the bars'
period_of "day$told" 2024-01-05 2024-01-04 2024-01-08
period_of "week$told" 2024-01-05 2024-01-12 2024-01-26 2024-02-02
period_of "month$told" 2024-01-31 2024-02-29 2024-03-29
period_of "quarter$told" 2023-12-29 2024-03-29 2024-06-28
period_of "year$told" 2022-12-30 2023-12-29 2024-12-31
period_of "15s$told" '2024-01-02 09:30:00' '2024-01-02 09:30:15' '2024-01-02 09:30:30'
period_of "1min$told" '2024-01-02 09:59' '2024-01-02 10:00' '2024-01-02 10:30' '2024-01-02 10:31'
period_of "60min$told" '2024-01-02 10:00' '2024-01-02 11:00' '2024-01-03 10:00' '2024-01-03 11:00'
period_of "120min$told" '2024-01-02 10:00' '2024-01-02 12:00'
period_of 'day, as the bars tell none' 2024-01-02
period_of 'day, as the bars tell none' '2024-01-02 10:00' '2024-01-02 16:07'

# named PERIOD...: each must be taken for the same period.
named() {
  number=$1
  shift
  for name in "$@"; do
    expect 0 "date,P
2024-01-04,$number" run -e 'P:=PERIOD*1000+BARINTERVAL;' --bars bars.csv --csv --last 1 --period "$name"
  done
}
named 3005 5min 5m 5MINUTES min5 0x3005 12293
named 1001 1min min 0x3000
named 7060 60min hour 1h 0x303C
named 15 15s 15sec
named 8001 day D daily 1d 0x4000
named 9001 week weekly 1w
named 10001 month 1mon
named 15001 quarter
named 11001 year
for name in dya 5 0min 300min 5day 2week '' min5min 0x0 99999999999 20240101 20000 0x8000; do
  expect 2 "quor: --period: '$name' is no period; write 5min, 15s, 2hour, day, week, month, quarter, \
year or a code such as 0x3005
quor check --help tells more" check -e 'A:C;' --period "$name"
done

# A byte order mark, a pipe, dates in all their forms, values that read back.
printf '\357\273\277date,close\r\n2024-01-02T09:35:00Z,1\r\n2024-01-02T09:40:00.123+08:00,2.5\r\n' >dates.csv
printf '2024-01-02 09:45:00-0500,3\r\n20240102095000.0,4\r\n2024-01-02T09:55,5\r\n' >>dates.csv
printf '20240102T100000Z,6\r\n2024/01/02 10:05:00 UTC,7\r\n' >>dates.csv
printf '\357\273\277A:=MA(C,2)/3;\r\n三:=IF(C>2,LN(0),NULL);' >mark.quor
lines='date,A,三
2024-01-02 09:35:00,,
2024-01-02 09:40:00,0.5833333333333334,-inf
2024-01-02 09:45:00,0.9166666666666666,-inf
2024-01-02 09:50:00,1.1666666666666667,-inf
2024-01-02 09:55:00,1.5,-inf
2024-01-02 10:00:00,1.8333333333333333,-inf
2024-01-02 10:05:00,2.1666666666666665,-inf'
expect 0 "$lines" run mark.quor --bars dates.csv --csv
same "$(quor run mark.quor --bars - --csv <dates.csv 2>/dev/null)" "$lines" 'quor run --bars -'
same "$(quor run - --bars dates.csv --csv <mark.quor 2>/dev/null)" "$lines" 'quor run -'
expect 0 'date,A
2024-01-02 10:05:00,7' run -e 'A:=C;' --bars dates.csv --csv --last 1
printf 'date,close\n20240102.5,1\n' >fraction.csv
expect 1 "quor: fraction.csv:2: '20240102.5' is no date; write 2024-01-31, 2024-01-31 09:35:00 or 20240131093500, the year first" run -e 'A:=C;' --bars fraction.csv
printf '\377\376d\000' >wide.csv
expect 1 'quor: wide.csv: the text is UTF-16; save it as UTF-8' run -e 'A:=C;' --bars wide.csv

# A script that isn't UTF-8: what it most likely is. The comments say "average" in the language of each.
# encoded NAME BYTES: the encoding as the message names it; the bytes as printf reads them.
encoded() {
  printf "$2" >encoded.quor
  guess="the text isn't UTF-8 but most likely $1; save it as UTF-8"
  expect 1 "quor: encoded.quor: $guess" check encoded.quor
  expect 1 "quor: encoded.quor: $guess" scan encoded.quor bars.csv
}
encoded 'GB18030 (GBK)' '// \276\371\317\337\n\276\371:MA(C,5);\n'
encoded 'GB18030 (GBK)' '{\303\277\310\325\265\304\223\360}A:C;\n'
encoded Big5 '// \245\255\247\241\275u\nA:C;\n'
encoded 'Windows-1252 (Latin-1)' '// gleitender Durchschnitt f\374r \304rger\nA:C;\n'
encoded 'Windows-1252 (Latin-1)' '{Moyenne crois\351e, d\351part}A:C;'
encoded Windows-1251 '// \361\352\356\353\374\347\377\371\340\377 \361\360\345\344\355\377\377\nA:C;\n'
encoded UTF-16LE 'A\000:\000C\000;\000'
encoded UTF-16BE '\000A\000:\000C\000;'
encoded UTF-32 'A\000\000\000:\000\000\000C\000\000\000;\000\000\000'
guess="the text isn't UTF-8 but most likely GB18030 (GBK); save it as UTF-8"
printf '\276\371\317\337:C;' >gbk.quor
expect 1 "quor: gbk.quor: $guess" run gbk.quor --bars bars.csv
same "$(quor run - --bars bars.csv 2>&1 <gbk.quor | grep -v period)" "quor: standard input: $guess" 'quor run -'
expect 1 "quor: gbk.quor: $guess" check -e 'A:C;' --params gbk.quor
expect 1 "quor: gbk.quor: $guess" chart gbk.quor --bars bars.csv --out a.svg
if has studio; then
  mkdir page
  echo >page/index.html
  expect 1 "quor: gbk.quor: $guess" studio gbk.quor --no-open --page page
fi
if [ -z "$emulator" ]; then expect 1 "quor: -e: $guess" check -e "$(cat gbk.quor)"; fi
printf 'A:C;\n{ \345\235\207\347\272 }B:C;\n' >cut.quor
expect 1 'quor: cut.quor:2: a character is no UTF-8; save the text as UTF-8 again' check cut.quor
printf '\377\376A\000' >wide.quor
expect 1 'quor: wide.quor: the text is UTF-16; save it as UTF-8' check wide.quor
printf 'A:C;\000\000\001' >binary.quor
expect 1 'quor: binary.quor: is no text file' check binary.quor
printf '\357\273\277A:C,COLORD;' >marked.quor
expect 1 'marked.quor:1:5: error: COLORD is no colour (code 2013); write a colour word, or COLOR and 6 hexadecimal digits
A:C,COLORD;
    ^~~~~~' check marked.quor

echo '[{"LINE_NAME":"a","line_name":"x"},{"LINE_NAME":"A"}]' >look.json
expect 0 'quor: warning: look.json: the script has no line a
date  A' run -e 'A:C;' --bars bars.csv --last 0 --lines look.json

# What the library takes as JSON and would pass over in silence.
expect 1 'quor: wrong.json: not of the form [{"LINE_NAME":"MA5","COLOR_KEY":"...","LINE_THICK":1,"IS_SELECTED":1}, ...]' \
  check -e 'A:C;' --lines wrong.json
expect 1 'quor: none.json: is no calendar, which is an object in JSON' \
  run -e 'A:C;' --bars bars.csv --calendar none.json
expect 1 'quor: wrong.json: is no calendar: it needs "status_code":0 and "data"' \
  run -e 'A:C;' --bars bars.csv --calendar wrong.json
echo '{"status_code":0,"data":{"trade_dates":[]}}' >short.json
expect 1 'quor: short.json: is no calendar: "data" lacks "timezone"' scan -e 'A:C;' bars.csv --calendar short.json

# Files that can't be read.
: >empty.quor
expect 1 'quor: empty.quor: is empty' check empty.quor
mkdir folder.csv
if [ -z "$emulator" ]; then
  long=$(printf '%0300d' 0)
  expect 1 "quor: $long: can't be opened: File name too long" check "$long"
fi
expect 1 'quor: folder.csv: is a directory, not a file' run -e 'A:=C;' --bars folder.csv
misused "the script and the bars can't both come from the pipe" run - --bars -

# Mistakes of the command line: what to write instead.
expect 2 "quor: 'rnu' is no command; did you mean run?" rnu a.quor --bars bars.csv
expect 2 "quor: 'bars.csv' is no command; to check a script write quor check bars.csv" bars.csv
expect 2 "quor: 'frobnicate' is no command; write one of $commands" frobnicate
expect 2 "quor: no command: write one of $commands, as in quor check SCRIPT.quor"
expect 2 'quor: quor has no option --verison; did you mean --version?' --verison
expect 2 'quor: run has no option --bras; did you mean --bars?
quor run --help tells more' run mark.quor --bras bars.csv
expect 2 'quor: --bars is missing; write --bars FILE.csv, or --bars - for bars from a pipe
quor run --help tells more' run mark.quor
expect 2 'quor: --last: its value is missing; write --last 20
quor run --help tells more' run mark.quor --bars bars.csv --last
# refused OPTION VALUE BOUNDS ARGUMENTS...: negative numbers, large ones and half ones aren't taken.
refused() {
  option=$1 value=$2 bounds=$3
  shift 3
  expect 2 "quor: $option: '$value' is no whole number from $bounds
quor $1 --help tells more" "$@" -e 'A:C;' "$option" "$value"
}
for value in -3 ten 1.5 '' 99999999999999999999; do
  refused --last "$value" '0 up' run --bars bars.csv
  refused --from "$value" '0 up' run --bars bars.csv
  refused --last "$value" '1 up' scan bars.csv
  refused --jobs "$value" '1 to 1024' scan bars.csv
done
expect 2 'quor: --last is given twice
quor run --help tells more' run -e 'A:C;' --bars bars.csv --last 1 --last 2
refused --last 0 '1 up' scan bars.csv
refused --jobs 0 '1 to 1024' scan bars.csv
expect 0 "$(quor run -e 'A:C;' --bars bars.csv --last 10 2>/dev/null)" run -e 'A:C;' --bars bars.csv --last 010
expect 2 'quor: --json and --csv don'\''t go together: give one of them
quor run --help tells more' run mark.quor --bars bars.csv --json --csv
expect 2 'quor: one argument too many; a text with blanks or signs such as ; and ( stands in quotes
quor run --help tells more' run mark.quor bars.csv A:C
mkdir -p scripts/inner
echo 'A:C;' >scripts/a.quor
echo 'A:EMMA(C,5);B:XX;' >scripts/inner/b.quor
echo 'C>O;' >warned.quor
expect 1 "scripts/inner/b.quor:1:3: error: nothing defines EMMA (code 2); did you mean EMA?
A:EMMA(C,5);B:XX;
  ^~~~
scripts/inner/b.quor:1:15: error: nothing defines XX (code 2); declare it above, or as a constant: CONST XX:number;
A:EMMA(C,5);B:XX;
              ^~
warned.quor:1:1: warning: this statement has no effect; write a name and ':=' in front to keep its value, or ':' to draw it
C>O;
^~~
3 scripts: 1 sound, 1 with errors, 1 with warnings" check scripts warned.quor
misused '--json is for one script' check scripts --json
mkdir empty
expect 1 'quor: empty: holds no script (*.quor)' check empty
same "$(quor -V)" "$(quor --version)" 'quor -V'
echo 'A:=C;' >short.quor
same "$(quor run short.quor bars.csv 2>&1)" "$(quor run short.quor --bars bars.csv 2>&1)" 'bars without --bars'

# Files of bars as others write them.
printf 'date\tAdj Close\thigh\tlow\n2024-01-02\t1.5\t1\t2\n' >tabs.csv
expect 0 'quor: warning: tabs.csv:2: the high 1 is below the low 2
quor: warning: tabs.csv:2: the high 1 is below the close 1.5
quor: warning: tabs.csv:2: the close 1.5 is below the low 2
date               A
2024-01-02  1.500000' run -e 'A:=C;' --bars tabs.csv --column 'close=Adj Close'
expect 1 "quor: tabs.csv:1: the header names no 'close' column; it names date, Adj Close, high, low; 'Adj Close' is near" \
  run -e 'A:=C;' --bars tabs.csv
misused '--column close: write FIELD=COLUMN, such as close="Adj Close"' \
  run -e 'A:=C;' --bars tabs.csv --column close
misused '--column price=x: no field is called price; fields are date, open, high, low, close, volume, amount' \
  run -e 'A:=C;' --bars tabs.csv --column price=x
expect 0 'date               B         A
2024-01-02  2.500000  1.500000' run -e 'A:=C;B:=C+1;' tabs.csv -q -d tab --column 'close=Adj Close' --columns b,a
sed 's/\t/^/g' tabs.csv >carets.csv
expect 0 'date               A
2024-01-02  1.500000' run -e 'A:C;B:=C;' carets.csv -q -d ^ --column 'close=Adj Close'
misused '--delimiter ab: write one character, or comma, semicolon, tab or pipe' run -e 'A:C;' tabs.csv -d ab
if command -v gzip >/dev/null; then
  # Two packed texts behind one another are one, with a first line in each.
  { gzip -c <bars.csv && sed 's/2024/2025/' bars.csv | gzip -c; } >packed.csv.gz
  head -c 30 packed.csv.gz >cut.csv.gz
  printf '\037\213\010\000\000\000\000\000\000\003\377damaged' >damaged.csv.gz
  if quor run -e 'A:C;' packed.csv.gz 2>&1 | grep -q 'unpack it by'; then
    # A program may be built without what unpacks.
    for packed in packed cut damaged; do
      expect 1 "quor: $packed.csv.gz: is packed by gzip; unpack it by gzip -d, or read it from a pipe of gzip -dc" \
        run -e 'A:C;' $packed.csv.gz
    done
  else
    expect 0 'date,A
2024-01-02,1
2024-01-03,2
2024-01-04,4
2025-01-02,1
2025-01-03,2
2025-01-04,4' run -e 'A:C;' -b packed.csv.gz --csv
    expect 0 'security  date        A
packed    2025-01-04  4' scan -e 'A:C;' packed.csv.gz
    expect 1 'quor: cut.csv.gz: ends in the middle of what is packed' run -e 'A:C;' cut.csv.gz
    expect 1 'quor: damaged.csv.gz: is packed by gzip and damaged' run -e 'A:C;' damaged.csv.gz
  fi
fi

# Which lines are printed: those that are drawn, all where none is, or as the user says.
set -- run bars.csv -q -n 1 -e
expect 0 'date        A
2024-01-04  4' "$@" 'A:C;B:=C+1;'
expect 0 'date        B
2024-01-04  5' "$@" 'B:=C+1;'
expect 0 'date        A  B
2024-01-04  4  5' "$@" 'A:C;B:=C+1;' --all
expect 0 'date        B  A
2024-01-04  5  4' "$@" 'A:C;B:=C+1;' --columns b,A
expect 0 'date        B
2024-01-04  5' run -q -n 1 -e 'A:C;B:=C+1;' --columns B bars.csv
misused '--columns BB: the script has no such line; did you mean B?' "$@" 'A:C;B:=C+1;' --columns A,BB
# JSON and comma-separated values have one form of date.
same "$(quor run bars.csv -q -e 'A:C;' --json -n 2 | grep dates)" '"dates":["2024-01-03","2024-01-04"],' 'dates in JSON'
same "$(quor scan bars.csv -q -e 'A:C;B:=C;' --json | grep date)" '{"security":"bars","date":"2024-01-04","A":4}],' 'a date of a scan in JSON'

# Quiet: what is wrong, and nothing else.
expect 0 '' check -e 'A:C^2;' --quiet
expect 1 "-e:1:4: warning: '^' is no operator; write POW(x,y) for a power
A:C^2;
   ^" check -e 'A:C^2;' --quiet --strict
same "$(quor run -e 'A:C;' -b bars.csv --quiet -n 0 2>&1)" 'date  A' 'quor run --quiet'
same "$(quor check -q -e 'A:X;' 2>&1 | head -n 1)" \
  '-e:1:3: error: nothing defines X (code 2); declare it above, or as a constant: CONST X:number;' 'quor check -q'

# Colours on a terminal alone.
if [ -z "$emulator" ] && command -v script >/dev/null; then
  on_terminal() { TERM=xterm script -qec "$1" /dev/null | tr -d '\r' | sed 's/\x1b/ESC/g'; }
  same "$(on_terminal "$program check -e 'A:X;'" | head -n 1)" 'ESC[1m-e:1:3:ESC[0m ESC[1;31merror:ESC[0m nothing '\
'defines X (code 2); declare it above, or as a constant: CONST X:number;' 'an error on a terminal'
  same "$(NO_COLOR=1 on_terminal "$program check -e 'A:X;'" | grep -c ESC)" 0 'NO_COLOR'
fi

expect 2 'quor: -e: an empty text is no script
quor run --help tells more' run -e '' --bars bars.csv
expect 2 'quor: --where: an empty text is no expression
quor scan --help tells more' scan -e 'A:C;' bars.csv --where ' '
misused '--from 3: the bars are 3, and the first of them is row 0' run -e 'A:C;' --bars bars.csv --from 3
if [ -z "$emulator" ]; then
  for command in 'run -e A:C; --bars bars.csv' 'scan -e A:C; bars.csv' 'check -e A:C;' 'help MA' 'run --help'; do
    same "$({ quor $command 2>&1 >/dev/full; echo $?; } | tail -n 2)" "quor: the output can't be written
1" "quor $command on a full disk"
  done
fi

# Help of a word, of a command, of a code, of all.
expect 0 'MA(X,N)
  Mean of the last N bars.

Arguments
  X: the series; N: the period

First value and null
  From row N-1 on. Nulls among the bars aren'\''t counted; N below 1 or null gives null.

Example
  A:MA(C,5);

CURRBARSCOUNT
  Bars from here to the last, 1 at the last.

Example
  A:CURRBARSCOUNT;' help ma CURRBARSCOUNT
expect 0 "Code 14: the statement has no ';' at its end

What to do
  close it; // may stand only where no statement is under way" help 14
for topic in fields operators colours signs styles 'short forms' settings statements null references errors; do
  quor help "$topic" >/dev/null 2>&1 || same 'is unknown' 'a page' "quor help $topic"
done
same "$(quor help short forms)" "$(quor help 'short forms')" 'a topic of two words'
quor help highest | grep -q '^  HHV: ' || same "$(quor help highest)" HHV 'quor help highest'
quor help rma | grep -q 'SMA(X,N,1)' || same "$(quor help rma)" 'SMA(X,N,1)' 'quor help rma'
expect 1 "quor: '2005' is neither a function word nor a command; quor help lists them" help 2005
expect 1 "quor: 'EMMA' is neither a function word nor a command; did you mean EMA?" help EMMA
expect 1 "quor: 'rnu' is neither a function word nor a command; did you mean run?" help rnu
same "$(quor help run)" "$(quor run --help)" 'quor help run'
indexed=$(sed -n 's/^| \[`\(COND,\)\{0,1\}\([A-Z0-9]*\).*/\2/p' "$samples/../docs/language.md" | sort)
same "$(quor help --list | sort)" "$indexed" 'quor help --list'
same "$(quor help | tr ' ' '\n' | grep -c -x -F -e CURRBARSCOUNT -e EMA)" 2 'quor help'
for command in $(echo "$commands" | tr -d ,); do
  quor $command --help | grep -q "^  quor $command " || same 'no example' 'an example' "quor $command --help"
done

# What the tasks show of the command line is what it does.
mkdir tasks
awk '/^```csv / { file = "tasks/" $2; next }
  /^```console/ { file = "tasks/" ++count ".console"; next }
  /^```/ { file = "" }
  file != "" { print > file }' "$samples/../docs/tasks.md"
for shown in tasks/*.console; do
  command=$(sed -n '1s/^\$ //p' "$shown")
  same "$(cd tasks && eval "$command" 2>/dev/null)" "$(sed 1d "$shown")" "$command"
done
same "$(ls tasks/*.console | wc -l | tr -d ' ')" 3 'commands in docs/tasks.md'

# The options of all commands are those of the manual page and of each completion.
quor_options() {
  for command in '' check run chart scan watch format lsp studio; do quor $command --help; done
}
options_in() { grep -o -e '--[a-z][a-z-]*' | sort -u; }
options=$(quor_options | options_in)
if [ "$commands" = 'check, run, chart, scan, watch, format, lsp, studio, help' ]; then
  same "$(sed 's/\\-/-/g' "$share/quor.1" | options_in)" "$options" quor.1
  # Completions ask for the list of words, which isn't meant for people.
  same "$(grep -v '^#' "$share/quor.bash" | sed 's/help --list//' | options_in)" "$options" quor.bash
  same "$(sed 's/help --list//' "$share/_quor" | options_in)" "$options" _quor
  same "$(sed -n 's/^complete .* -l \([a-z-]*\) .*/--\1/p' "$share/quor.fish" | sort -u)" "$options" quor.fish
fi
if command -v bash >/dev/null; then
  completed=$(bash -c '. "$1"; COMP_WORDS=(quor run --ba) COMP_CWORD=2; _quor; echo "${COMPREPLY[@]}"' \
    - "$share/quor.bash")
  same "$completed" --bars 'completion of quor run --ba'
fi

for script in "$samples"/cookbook/*.quor; do
  quor check "$script" >/dev/null || same 'a failure' 'success' "$script"
done

[ $failures -eq 0 ] || exit 1
