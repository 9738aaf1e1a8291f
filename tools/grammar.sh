#!/bin/sh
# Writes editors/quor.tmLanguage.json anew, from the words of the language.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages
build release
written=$(mktemp) || exit 1
trap 'rm -f "$written"' EXIT
build/release/host/quor help --grammar >"$written" || die "the grammar can't be written"
cat "$written" >editors/quor.tmLanguage.json
