#!/bin/sh
# Runs a program of the build for 64-bit ARM.
#   tools/qemu.sh PROGRAM ARGUMENTS...
exec qemu-aarch64 -L /usr/aarch64-linux-gnu "$@"
