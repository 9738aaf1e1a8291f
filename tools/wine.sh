#!/bin/sh
# Runs a program of the Windows build, without a screen and in a Wine of its own under build/.
#   tools/wine.sh PROGRAM ARGUMENTS...
#   tools/wine.sh --start    prepares this Wine and keeps it running until
#   tools/wine.sh --stop
build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX="$build/wine" WINEDEBUG=-all WINEARCH=win64
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
# TZ is read by rules of its own there.
unset DISPLAY WAYLAND_DISPLAY TZ

# Installs it if need be. In a shell of its own, for the program stays in the caller's folder.
need_wine() (
  . "$(dirname "$0")/lib.sh"
  need_packages $wine_packages
  command -v wine >/dev/null || die "Wine is missing; needed, by their Debian names: $wine_packages"
)
command -v wine >/dev/null || need_wine || exit

# Fails if none is running, too.
stop() { timeout 60 wineserver --kill; }

case $1 in
  --start)
    mkdir -p "$WINEPREFIX"
    stop
    wineserver --persistent && timeout 300 wine wineboot --init >/dev/null 2>&1
    ;;
  --stop) stop ;;
  *) exec wine "$@" ;;
esac
