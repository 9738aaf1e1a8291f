#!/bin/sh
# Installs what is missing, builds and makes the packages in dist/. Prints their names.
#   tools/package.sh [PRESET]    release by default, for Linux; windows; python for a wheel
set -u
. "$(dirname "$0")/lib.sh"

preset=${1:-release}
if [ "$preset" = python ]; then
  python=/usr/bin/python3
  [ -x "$python" ] || python=python3
  need_packages $build_packages $python_packages
  "$python" -m pip wheel --quiet --no-build-isolation --no-deps --no-index \
    --disable-pip-version-check -w dist ./python || die "the wheel could not be made"
  ls dist/quor-*.whl
  exit
fi
if [ "$preset" = windows ]; then
  tools/windows-libraries.sh || exit
else
  need_packages $build_packages $host_packages $package_packages
fi
build "$preset" -DQUOR_BUILD_TESTS=OFF
log=build/$preset/packages.log
cpack --config "build/$preset/CPackConfig.cmake" -B dist >"$log" 2>&1 || {
  cat "$log" >&2
  die "the packages could not be made"
}
rm -rf dist/_CPack_Packages
sed -n 's/^CPack: - package: \(.*\) generated\.$/\1/p' "$log"
