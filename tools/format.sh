#!/bin/sh
# Formats the C and C++ files, or with --check says which are not formatted.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $format_packages
case ${1:-} in
  --check) sources $folders | xargs clang-format-14 --dry-run --Werror ;;
  '') sources $folders | xargs clang-format-14 -i ;;
  *) die "unknown argument '$1'" ;;
esac
