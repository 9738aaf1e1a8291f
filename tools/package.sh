#!/bin/sh
# Installs what is missing, builds and makes the packages in dist/. Prints their names.
#   tools/package.sh
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages $package_packages
build release -DQUOR_BUILD_TESTS=OFF
log=build/release/packages.log
cpack --config build/release/CPackConfig.cmake -B dist >"$log" 2>&1 || {
  cat "$log" >&2
  die "the packages could not be made"
}
rm -rf dist/_CPack_Packages
sed -n 's/^CPack: - package: \(.*\) generated\.$/\1/p' "$log"
