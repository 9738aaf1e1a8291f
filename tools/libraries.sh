#!/bin/sh
# Builds the libraries that are linked into what is shipped, from Debian's sources, into
# build/libraries/SYSTEM. Does nothing if they are there.
#   tools/libraries.sh [SYSTEM]    linux by default; windows, which needs two more
set -u
. "$(dirname "$0")/lib.sh"

system=${1:-linux}
out=$root/build/libraries/$system
work=$root/build/libraries/sources-$system
apt=$work/apt
case $system in
  linux)
    needed=$library_packages
    cc=gcc
    ar=ar
    toolchain=
    ;;
  windows)
    needed=$windows_packages
    cc=x86_64-w64-mingw32-gcc-posix
    ar=x86_64-w64-mingw32-ar
    toolchain="--toolchain $root/cmake/windows.cmake"
    ;;
  *) die "unknown system '$system'" ;;
esac

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
    cmake -S "$source" -B "$work/$name-build" -G Ninja $toolchain \
      -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$out" -DCMAKE_INSTALL_LIBDIR=lib \
      -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DBUILD_SHARED_LIBS=OFF "$@" &&
      cmake --build "$work/$name-build" && cmake --install "$work/$name-build"
  } >"$work/$name.log" 2>&1 || die "the build of $name failed: $(tail -n 20 "$work/$name.log")"
}

# Holds a kernel for each kind of processor and takes the best one at run time. Its symbols stay
# inside of what it is linked into.
json_library() {
  cmake_library simdjson "$work/simdjson" -DSIMDJSON_ENABLE_THREADS=OFF \
    -DCMAKE_POSITION_INDEPENDENT_CODE=ON -DCMAKE_CXX_FLAGS=-ffp-contract=off \
    -DCMAKE_CXX_VISIBILITY_PRESET=hidden -DCMAKE_VISIBILITY_INLINES_HIDDEN=ON
}

# One file, whose own build would want a shell on Windows.
csv_library() {
  mkdir -p "$out/include" "$out/lib"
  "$cc" -O2 -fPIC -c "$work/libcsv/libcsv.c" -o "$work/libcsv.o" &&
    "$ar" rcs "$out/lib/libcsv.a" "$work/libcsv.o" &&
    cp "$work/libcsv/csv.h" "$out/include" || die "the build of libcsv failed"
}

# One header. Debian's own package has it cut into a shared library, which would want OpenSSL.
http_library() {
  cp "$work/cpp-httplib/httplib.h" "$out/include" || die "the header of cpp-httplib can't be copied"
}

# Headers only; taken over one by one, because those of this machine must stay out of sight.
command_line_library() {
  mkdir -p "$out/include" "$out/share/cmake"
  cp -R /usr/include/CLI "$out/include" && cp -R /usr/share/cmake/CLI11 "$out/share/cmake" ||
    die "the headers of CLI11 can't be copied"
}

# Two configurations at once build them once.
mkdir -p "$root/build/libraries"
exec 9>"$root/build/libraries/lock"
flock 9 || die "no lock in build/libraries"

recipe=$(cat "$0" cmake/windows.cmake | cksum)
[ "$(cat "$out/recipe" 2>/dev/null)" = "$recipe" ] && exit
need_packages $needed
say "Building libraries for $system"
rm -rf "$out" "$work"
derive_sources
private_apt update >/dev/null 2>"$work/update.log" ||
  die "the lists of sources can't be had: $(cat "$work/update.log")"
fetch_source simdjson
fetch_source libcsv
json_library
csv_library
if [ "$system" = linux ]; then
  fetch_source cpp-httplib
  http_library
else
  cmake_library googletest /usr/src/googletest -DBUILD_GMOCK=OFF
  command_line_library
fi
rm -rf "$work"
echo "$recipe" >"$out/recipe"
