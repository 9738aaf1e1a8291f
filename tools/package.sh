#!/bin/sh
# Installs what is missing, builds, with the page of the studio and the manual, and makes the packages
# in dist/. Prints their names.
#   tools/package.sh            packages for Debian and an archive for any Linux
#   tools/package.sh arm64      the same for 64-bit ARM
#   tools/package.sh windows    an archive
#   tools/package.sh python     a wheel
#   tools/package.sh sdist [FOLDER]   the Python package as sources, which are built without a network
set -u
. "$(dirname "$0")/lib.sh"

preset=${1:-release}

need_python() {
  python=/usr/bin/python3
  [ -x "$python" ] || python=python3
  need_packages $build_packages $python_packages
}

make_wheel() {
  need_python
  "$python" -m pip wheel --quiet --no-build-isolation --no-deps --no-index \
    --disable-pip-version-check -w dist ./python || die "the wheel could not be made"
  ls dist/quor-*.whl
}

# pack_sources FOLDER
pack_sources() {
  need_python
  mkdir -p "$1"
  folder=$(cd "$1" && pwd)
  (cd python && "$python" -W ignore setup.py -q sdist -d "$folder" >/dev/null) ||
    die "the sources could not be packed"
  ls "$folder"/quor-*.tar.gz
}

case $preset in
  python)
    make_wheel
    exit
    ;;
  sdist)
    pack_sources "${2:-dist}"
    exit
    ;;
  windows) need_packages $windows_packages ;;
  arm64) need_packages $arm64_packages $package_packages ;;
  *) need_packages $build_packages $host_packages $package_packages ;;
esac
tools/build-web.sh >&2 || die "the page of the studio could not be built"
tools/build-manual.sh >&2 || die "the manual could not be made"

# make GENERATOR LIBDIR: each system has its own folder for libraries.
make() {
  build "$preset" -DQUOR_BUILD_TESTS=OFF -DCMAKE_INSTALL_LIBDIR="$2" >&2
  log=build/$preset/packages.log
  cpack --config "build/$preset/CPackConfig.cmake" -G "$1" -B dist >"$log" 2>&1 || {
    cat "$log" >&2
    die "the packages could not be made"
  }
  rm -rf dist/_CPack_Packages
  sed -n 's/^CPack: - package: \(.*\) generated\.$/\1/p' "$log"
}

if [ "$preset" = windows ]; then
  make ZIP lib
else
  architecture=$(dpkg --print-architecture)
  [ "$preset" != arm64 ] || architecture=arm64
  make DEB "lib/$(dpkg-architecture -a "$architecture" -f -qDEB_HOST_MULTIARCH)"
  make TGZ lib
fi
