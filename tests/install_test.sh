#!/bin/sh
# Installs a build, moves it, and builds and runs the clients in C and C++ against it, through CMake
# and through pkg-config.
#   install_test.sh CMAKE GENERATOR BUILD CC CXX VERSION
set -eu
cmake=$1
generator=$2
build=$3
cc=$4
cxx=$5
version=$6
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
warnings="-Wall -Wextra -Wpedantic -Werror"

# same TEXT EXPECTED WHAT
same() {
  [ "$1" = "$2" ] && return
  printf '%s gave\n%s\ninstead of\n%s\n' "$3" "$1" "$2"
  exit 1
}

"$cmake" --install "$build" --prefix "$folder/first" >install.log
mv first moved
prefix=$folder/moved
examples=$prefix/share/doc/quor-parser/examples
libraries=$(dirname "$(find "$prefix" -name lib_quor_parser.so)")
expected=$(cat "$examples/session.txt")

"$cmake" -G "$generator" -S "$examples" -B by-cmake -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$warnings" \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$warnings" >cmake.log
"$cmake" --build by-cmake >>cmake.log || {
  cat cmake.log
  exit 1
}
same "$(by-cmake/session)" "$expected" "the client in C built by CMake"
same "$(by-cmake/session_cpp)" "$expected" "the client in C++ built by CMake"
if [ -e "$libraries/libquor_engine.a" ]; then
  same "$(by-cmake/arrays)" "$(cat "$examples/arrays.txt")" "the client of the engine"
fi
same "$(by-cmake/advice)" "$(cat "$examples/advice.txt")" "the client of advice built by CMake"

export PKG_CONFIG_PATH="$libraries/pkgconfig"
same "$(pkg-config --modversion quor_parser)" "$version" pkg-config
"$cc" $warnings "$examples/session.c" $(pkg-config --cflags --libs quor_parser) -o session
same "$(LD_LIBRARY_PATH=$libraries ./session)" "$expected" "the client built through pkg-config"

same "$(pkg-config --modversion quor_advice)" "$version" "pkg-config for advice"
"$cc" $warnings "$examples/advice.c" $(pkg-config --cflags --libs quor_advice quor_parser) -o advice
same "$(LD_LIBRARY_PATH=$libraries ./advice)" "$(cat "$examples/advice.txt")" "advice through pkg-config"

# The one file is the library, whatever stands beside it.
mkdir alone && cp "$libraries/lib_quor_parser.so" alone
same "$(ls "$libraries" | grep -c '^lib_quor_parser')" 1 "the count of library files"
same "$(LD_LIBRARY_PATH=alone ./session)" "$expected" "the client with a copy of the library"
same "$(strings "$libraries/lib_quor_parser.so" | grep '^lib_quor_parser ')" \
  "lib_quor_parser $version" "the version in the file"

# Every link of the documentation leads to a file that is there.
find "$prefix/share" -name '*.md' | while read -r page; do
  grep -o '](\([^)#:]*\)[)#]' "$page" | sed 's/^](//; s/[)#]$//' | while read -r link; do
    [ -e "$(dirname "$page")/$link" ] || echo "$page: $link"
  done
done >broken
same "$(cat broken)" "" "links of the documentation"

# The program finds its library without help, and so does the one that draws for it.
if [ -e "$prefix/bin/quor" ]; then
  same "$("$prefix/bin/quor" --version)" "quor $version" "quor --version"
  for file in man/man1/quor.1 bash-completion/completions/quor zsh/site-functions/_quor \
    fish/vendor_completions.d/quor.fish; do
    same "$(ls "$prefix/share/$file")" "$prefix/share/$file" "the installed $file"
  done
fi
if [ -e "$prefix/libexec/quor/quor-chart" ]; then
  samples=$prefix/share/doc/quor-parser/samples
  "$prefix/bin/quor" chart "$samples/bands.quor" --bars "$samples/index-daily.csv" --out bands.svg
  same "$(grep -c '^</svg>' bands.svg)" 1 "the picture"
fi
