#!/bin/sh
# Builds the libraries of the Windows build into build/windows-libraries, from Debian's sources.
set -u
. "$(dirname "$0")/lib.sh"

out=$root/build/windows-libraries
work=$root/build/windows-sources
apt=$work/apt

# The machine's own package sources, read for source packages instead. The folder of apt that holds
# them and all that apt keeps are private, so that the machine stays as it is.
derive_sources() {
  rm -rf "$apt"
  mkdir -p "$apt/sources.list.d" "$apt/lists/partial" "$apt/cache/archives/partial"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$file" ] && sed -n 's/^[[:blank:]]*deb[[:blank:]]/deb-src /p' "$file"
  done >"$apt/sources.list"
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] || continue
    sed 's/^[Tt]ypes:.*/Types: deb-src/' "$file" >"$apt/sources.list.d/$(basename "$file")"
  done
}

private_apt() {
  apt-get -qq -o Dir::Etc::sourcelist="$apt/sources.list" \
    -o Dir::Etc::sourceparts="$apt/sources.list.d" -o Dir::State::lists="$apt/lists" \
    -o Dir::Cache="$apt/cache" -o APT::Sandbox::User=root "$@" </dev/null
}

# fetch_source PACKAGE: into the folder $work/PACKAGE
fetch_source() {
  rm -rf "$work/$1" "$work/fetched"
  mkdir -p "$work/fetched"
  (cd "$work/fetched" && private_apt source "$1" >/dev/null 2>"$work/$1.log") ||
    die "the source of $1 can't be had: $(cat "$work/$1.log")"
  mv "$work/fetched/"*/ "$work/$1"
}

# cmake_library NAME SOURCE OPTIONS...
cmake_library() {
  name=$1
  source=$2
  shift 2
  {
    cmake -S "$source" -B "$work/$name-build" -G Ninja --toolchain "$root/cmake/windows.cmake" \
      -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$out" \
      -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@" &&
      cmake --build "$work/$name-build" && cmake --install "$work/$name-build"
  } >"$work/$name.log" 2>&1 || die "the build of $name failed: $(tail -n 20 "$work/$name.log")"
}

# One file, whose own build would want a shell on Windows.
csv_library() {
  mkdir -p "$out/include" "$out/lib"
  x86_64-w64-mingw32-gcc-posix -O2 -c "$work/libcsv/libcsv.c" -o "$work/libcsv.o" &&
    x86_64-w64-mingw32-ar rcs "$out/lib/libcsv.a" "$work/libcsv.o" &&
    cp "$work/libcsv/csv.h" "$out/include" || die "the build of libcsv failed"
}

# Headers only; taken over one by one, because those of this machine must stay out of sight.
command_line_library() {
  mkdir -p "$out/include" "$out/share/cmake"
  cp -R /usr/include/CLI "$out/include" && cp -R /usr/share/cmake/CLI11 "$out/share/cmake" ||
    die "the headers of CLI11 can't be copied"
}

recipe=$(cat "$0" cmake/windows.cmake | cksum)
[ "$(cat "$out/recipe" 2>/dev/null)" = "$recipe" ] && exit
need_packages $windows_packages
rm -rf "$out" "$work"
derive_sources
private_apt update >/dev/null 2>"$work/update.log"
fetch_source simdjson
fetch_source libcsv
cmake_library simdjson "$work/simdjson" -DSIMDJSON_ENABLE_THREADS=OFF
cmake_library googletest /usr/src/googletest -DBUILD_GMOCK=OFF
csv_library
command_line_library
echo "$recipe" >"$out/recipe"
