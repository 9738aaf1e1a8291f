#!/bin/sh
# Installs what is missing, cross-builds for 64-bit ARM, runs tests under an emulator, and makes the
# packages and tries them.
#   tools/test-arm64.sh          what is quick
#   tools/test-arm64.sh all      everything
set -u
. "$(dirname "$0")/lib.sh"

need_packages $arm64_packages $arm64_test_packages
tools/build-arm64.sh || exit
set -- "${1:-}" --timeout 1800
[ "$1" = all ] || set -- "$@" --label-exclude slow
shift
ctest --preset arm64 "$@" || exit

tools/package.sh arm64 >build/arm64/packages || exit
say "Trying the packages"
tree=$root/build/arm64/tree
rm -rf "$tree"
mkdir -p "$tree/packages" "$tree/archive"
while read -r package; do
  case $package in
    *.deb)
      [ "$(dpkg-deb -f "$package" Architecture)" = arm64 ] || die "$package is for another processor"
      dpkg-deb -x "$package" "$tree/packages"
      ;;
    *) tar -C "$tree/archive" --strip-components 1 -xzf "$package" ;;
  esac || die "$package can't be unpacked"
done <build/arm64/packages
needed=$(dpkg-deb -f dist/quor_*_arm64.deb Depends)
[ "$needed" = 'libquor-parser (>= 0.9.0), libc6 (>= 2.28), libgcc-s1 (>= 4.2)' ] ||
  die "the package of the program needs $needed"

# tried PREFIX LIBRARIES: a client says its session, the program draws, and the page is there.
tried() {
  aarch64-linux-gnu-gcc examples/session.c -I "$1/include" -L "$2" -l:lib_quor_parser.so \
    -Wl,-rpath,"$2" -o "$tree/session" && tools/qemu.sh "$tree/session" >"$tree/printed" &&
    cmp "$tree/printed" examples/session.txt || die "a client of $1 doesn't say the session"
  tools/qemu.sh "$1/bin/quor" chart "$1/share/doc/quor-parser/samples/kdj.quor" \
    --bars "$1/share/doc/quor-parser/samples/index-daily.csv" --out "$tree/picture.svg" 2>/dev/null
  grep -qxF "$(cksum <"$tree/picture.svg") kdj.quor" tests/host/pictures.txt ||
    die "the program of $1 draws another picture"
  [ -s "$1/share/quor/studio/studio.wasm" ] || die "$1 has no page of the studio"
}
tried "$tree/packages/usr" "$tree/packages/usr/lib/aarch64-linux-gnu"
tried "$tree/archive" "$tree/archive/lib"
rm -rf "$tree"
say "The packages run"
