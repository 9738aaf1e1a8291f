#!/bin/sh
# Makes the archive for Windows, unpacks it where nothing else is, builds clients against that alone,
# and runs them and its program.
#   archive_test.sh CPACK BUILD CC CXX SOURCES EMULATOR
set -eu
cpack=$1
build=$2
cc=$3
cxx=$4
sources=$5
emulator=$6
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cmake=$(dirname "$cpack")/cmake

# same TEXT EXPECTED WHAT
same() {
  [ "$1" = "$2" ] && return
  printf '%s gave\n%s\ninstead of\n%s\n' "$3" "$1" "$2"
  exit 1
}

# Line ends may be those of any system.
run() { "$emulator" "$@" 2>&1 | tr -d '\r'; }

"$cpack" --config "$build/CPackConfig.cmake" -G ZIP -B made >cpack.log || {
  cat cpack.log
  exit 1
}
mkdir unpacked
(cd unpacked && "$cmake" -E tar xf ../made/quor-parser-*-windows-*.zip)
prefix=$(echo "$folder"/unpacked/quor-parser-*)
examples=$prefix/share/doc/quor-parser/examples
samples=$prefix/share/doc/quor-parser/samples

# A client needs the headers, an import library and the DLL beside it.
mkdir clients
cp "$prefix"/bin/*.dll clients
client() {
  compiler=$1
  name=$2
  shift 2
  "$compiler" -static -Wall -Wextra -Werror -I "$prefix/include" "$examples/$name" "$@" \
    -o "clients/${name%.*}_${name##*.}.exe"
}
parser=$prefix/lib/lib_quor_parser.dll.a
client "$cc" session.c "$parser"
client "$cc" advice.c "$prefix/lib/lib_quor_advice.dll.a" "$parser"
client "$cc" live.c "$prefix/lib/lib_quor_parser.lib"
client "$cxx" session.cpp -std=c++17 "$parser"
client "$cxx" arrays.cpp -std=c++20 -I "$prefix/include/quor_engine" "$prefix/lib/libquor_engine.a"
same "$(run clients/session_c.exe)" "$(cat "$examples/session.txt")" "the client in C"
same "$(run clients/session_cpp.exe)" "$(cat "$examples/session.txt")" "the client in C++"
same "$(run clients/advice_c.exe)" "$(cat "$examples/advice.txt")" "the client of advice"
same "$(run clients/arrays_cpp.exe)" "$(cat "$examples/arrays.txt")" "the client of the engine"
same "$(run clients/live_c.exe <"$examples/live.csv")" "$(cat "$examples/live.txt")" "the client that follows"

# The program, from the folder that it was unpacked to.
quor() { run "$prefix/bin/quor.exe" "$@"; }
printf 'date,close\n2024-01-02,12\n2024-01-03,10\n2024-01-04,9\n' >bars.csv
same "$(quor run -e 'AVG:MA(C,2);' --bars bars.csv --period day)" 'date           AVG
2024-01-02    null
2024-01-03  11.000
2024-01-04   9.500' "run"
same "$(quor check -e 'A:EMMA(C,5);')" "-e:1:3: error: nothing defines EMMA (code 2); did you mean EMA?
A:EMMA(C,5);
  ^~~~" "check"
quor chart "$samples/kdj.quor" --bars "$samples/index-daily.csv" --out kdj.svg >chart.log
same "$(cksum <kdj.svg) kdj.quor" "$(grep ' kdj[.]quor$' "$sources/tests/host/pictures.txt")" "chart"
