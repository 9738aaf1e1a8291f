#!/bin/sh
# Installs what is missing, cross-builds for Windows, and runs all tests under Wine.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $windows_packages $wine_packages
tools/build-windows.sh || exit

# One Wine for all of the tests, whose start is what takes long. Nothing of it may stay behind.
trap 'tools/wine.sh --stop' EXIT
trap 'exit 1' HUP INT TERM
tools/wine.sh --start || die "Wine doesn't start"
timeout 600 ctest --preset windows
