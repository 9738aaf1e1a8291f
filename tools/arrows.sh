#!/bin/sh
# Fails on an #include line that points upward in the order of the rooms, and on units that include
# each other in a ring.
set -u
. "$(dirname "$0")/lib.sh"

need_packages python3
exec python3 tools/arrows.py
