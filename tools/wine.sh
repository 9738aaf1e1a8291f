#!/bin/sh
# Runs a program of the Windows build, without a screen and in a Wine of its own under build/.
#   tools/wine.sh PROGRAM ARGUMENTS...
build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX="$build/wine" WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
unset DISPLAY WAYLAND_DISPLAY
exec wine "$@"
