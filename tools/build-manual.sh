#!/bin/sh
# Installs what is missing and makes the manual, one HTML page with search, as build/manual/manual.html.
set -u
. "$(dirname "$0")/lib.sh"

need_packages python3 python3-markdown
python=/usr/bin/python3
[ -x "$python" ] || python=python3
mkdir -p build/manual
"$python" tools/manual.py build/manual/manual.html || die "the manual could not be made"
