#!/bin/sh
# Writes the index of words in docs/language.md anew, from the table in advice/words.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages
build release
page=docs/language.md
mark='<!-- written by tools/word-index.sh -->'
written=$(mktemp) || exit 1
trap 'rm -f "$written"' EXIT
sed "\|^$mark$|q" "$page" >"$written"
build/release/host/quor help --index >>"$written" || die "the index can't be written"
cat "$written" >"$page"
