#!/bin/sh
# Builds the libraries that are linked into what is shipped, from Debian's sources, into
# build/libraries/SYSTEM. Does nothing if they are there.
#   tools/libraries.sh [SYSTEM]            linux by default; arm64 and windows, which need two more; wasi
#   tools/libraries.sh --bring FOLDER      only fetches what a source package of the library brings along
set -u
. "$(dirname "$0")/lib.sh"
. tools/sources.sh

bring=
if [ "${1:-}" = --bring ]; then
  bring=$2
  shift 2
fi
system=${1:-linux}
out=$root/build/libraries/$system
work=$root/build/libraries/sources-$system
case $system in
  linux)
    needed=$library_packages
    cc=gcc
    parts="program"
    ar=ar
    toolchain=
    ;;
  windows)
    needed=$windows_packages
    cc=x86_64-w64-mingw32-gcc-posix
    parts="program cross"
    ar=x86_64-w64-mingw32-ar
    toolchain="--toolchain $root/cmake/windows.cmake"
    ;;
  arm64)
    needed=$arm64_packages
    cc=aarch64-linux-gnu-gcc
    parts="program cross"
    ar=aarch64-linux-gnu-ar
    toolchain="--toolchain $root/cmake/arm64.cmake"
    ;;
  wasi)
    needed="$wasm_packages $studio_packages"
    cc="clang-19 --target=wasm32-wasi"
    parts="page"
    ar=llvm-ar-19
    toolchain="--toolchain $root/cmake/wasm.cmake"
    ;;
  *) die "unknown system '$system'" ;;
esac
# No program is built from a source package.
[ ! -d "$brought" ] || parts=
launcher=
! command -v ccache >/dev/null || launcher=-DCMAKE_CXX_COMPILER_LAUNCHER=ccache
pic=-fPIC
[ "$system" != wasi ] || pic=

# has PART: of the program `quor`; of the page of its studio; of a cross build, whose libraries can't be
# this machine's
has() {
  case " $parts " in
    *" $1 "*) return 0 ;;
    *) return 1 ;;
  esac
}

# cmake_library NAME SOURCE OPTIONS...
cmake_library() {
  name=$1
  source=$2
  shift 2
  {
    cmake -S "$source" -B "$work/$name-build" -G Ninja $toolchain \
      -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$out" -DCMAKE_INSTALL_LIBDIR=lib \
      $launcher -DBUILD_SHARED_LIBS=OFF "$@" &&
      cmake --build "$work/$name-build" && cmake --install "$work/$name-build"
  } >"$work/$name.log" 2>&1 || die "the build of $name failed: $(tail -n 20 "$work/$name.log")"
}

# Holds a kernel for each kind of processor and takes the best one at run time. Its symbols stay
# inside of what it is linked into.
json_library() {
  cmake_library simdjson "$work/simdjson" -DSIMDJSON_ENABLE_THREADS=OFF \
    -DCMAKE_POSITION_INDEPENDENT_CODE=ON "-DCMAKE_CXX_FLAGS_RELEASE=-O3 -DNDEBUG -ffp-contract=off" \
    -DCMAKE_CXX_VISIBILITY_PRESET=hidden -DCMAKE_VISIBILITY_INLINES_HIDDEN=ON
}

# The functions of mathematics whose last bits differ from system to system, from the plain C of musl,
# so that they are the same on all: under names of their own, which leave those of the system alone,
# and compiled to the same operations, none of them fused.
mathematics_library() {
  musl=$work/musl
  objects=$work/mathematics
  renamed="acos asin atan cos exp log log10 pow sin tan floor scalbn
    __cos __rem_pio2 __rem_pio2_large __sin __tan
    __math_divzero __math_invalid __math_oflow __math_uflow __math_xflow"
  mkdir -p "$objects/include" "$out/lib"
  # In place of headers of the system: the few things that the sources take from it, and the names.
  {
    for name in $renamed __exp_data __log_data __pow_log_data; do
      echo "#define $name quor_$name"
    done
    echo "typedef double double_t;"
    echo "double floor(double x);"
    echo "double scalbn(double x, int n);"
    for name in fabs isnan sqrt; do echo "#define $name __builtin_$name"; done
    echo "#define INFINITY __builtin_inf()"
    echo "#define hidden __attribute__((visibility(\"hidden\")))"
  } >"$objects/include/math.h"
  for name in endian features; do : >"$objects/include/$name.h"; done
  for name in $renamed exp_data log_data pow_data; do
    $cc -std=gnu11 -ffreestanding -O2 $pic -fvisibility=hidden -ffp-contract=off \
      -fno-math-errno -U__FP_FAST_FMA -include math.h \
      -I "$objects/include" -I "$musl/src/internal" -I "$musl/arch/generic" \
      -c "$musl/src/math/$name.c" -o "$objects/$name.o" || return
  done
  "$ar" rcs "$out/lib/libquor_mathematics.a" "$objects"/*.o
}

# Headers only; taken over, because those of this machine must stay out of the sight of a cross build.
copy_header() {
  headers=/usr/include
  [ ! -d "$brought" ] || headers=$brought/include
  mkdir -p "$out/include"
  cp -R "$headers/$1" "$out/include" || die "the headers of $1 can't be copied"
}

# One header. Debian's own package has it cut into a shared library, which would want OpenSSL.
http_library() {
  cp "$work/cpp-httplib/httplib.h" "$out/include" || die "the header of cpp-httplib can't be copied"
}

# copy_package NAME HEADERS: the same with what CMake finds them by.
copy_package() {
  copy_header "$2"
  mkdir -p "$out/share/cmake"
  cp -R "/usr/share/cmake/$1" "$out/share/cmake" || die "the package of $1 can't be copied"
}

# What the two sources are built from, without their tests and examples, and under which terms.
bring_sources() {
  work=$bring/fetched
  out=$bring
  mkdir -p "$work"
  need_packages $needed
  derive_sources
  for name in simdjson musl; do
    fetch_source $name
    mkdir -p "$bring/$name"
  done
  (cd "$work/simdjson" && cp -R *.* LICENSE cmake include src singleheader "$bring/simdjson") &&
    (cd "$work/musl" && cp -R --parents COPYRIGHT arch/generic src/internal src/math/*.[ch] "$bring/musl") ||
    die "the sources can't be copied"
  copy_header fast_float
  rm -rf "$work"
}

if [ -n "$bring" ]; then
  bring_sources
  exit
fi

# Two configurations at once build them once.
mkdir -p "$root/build/libraries"
exec 9>"$root/build/libraries/lock"
flock 9 || die "no lock in build/libraries"

recipe=$(cat "$0" tools/sources.sh ${toolchain#--toolchain } </dev/null | cksum)
[ "$(cat "$out/recipe" 2>/dev/null)" = "$recipe" ] && exit
[ -d "$brought" ] || need_packages $needed
say "Building libraries for $system"
rm -rf "$out" "$work"
derive_sources
fetch_source simdjson
fetch_source musl
json_library
mathematics_library >"$work/mathematics.log" 2>&1 ||
  die "the build of the mathematics failed: $(tail -n 20 "$work/mathematics.log")"
copy_header fast_float
if has program; then
  fetch_source cpp-httplib
  http_library
fi
if has cross; then
  cmake_library googletest /usr/src/googletest -DBUILD_GMOCK=OFF
  copy_package CLI11 CLI
fi
! has cross && ! has page || copy_package nlohmann_json nlohmann
rm -rf "$work"
echo "$recipe" >"$out/recipe"
