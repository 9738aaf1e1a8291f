#!/bin/sh
# Installs what is missing and cross-builds the library, `quor` and the tests for 64-bit ARM, into
# build/arm64. Further arguments go to the configuration.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $arm64_packages
build arm64 "$@"
