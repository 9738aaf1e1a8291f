#!/bin/sh
# Runs clang-tidy and prints what it finds.
#   tools/tidy.sh                    over all sources: some minutes
#   tools/tidy.sh --changed [BASE]   over sources that differ from a commit, by default from where
#                                    the branch left origin/main, or from the commit before; a
#                                    changed header brings the sources that include it
#   tools/tidy.sh FILE...
set -u
. "$(dirname "$0")/lib.sh"

tidy_folders="src advice bars host examples tests bench fuzz"

base_commit() {
  base=$(git merge-base origin/main HEAD 2>/dev/null)
  [ -n "$base" ] && [ "$base" != "$(git rev-parse HEAD)" ] || base=$(git rev-parse -q --verify HEAD~1)
  echo "${base:-HEAD}"
}

changed_sources() {
  git diff --name-only "$1" -- $tidy_folders include | while read -r file; do
    case $file in
      *.h | *.hpp) git grep -l "#include \".*$(basename "$file")\"" -- $tidy_folders | grep -v '\.h$' ;;
      *.c | *.cpp) [ -f "$file" ] && echo "$file" ;;
    esac
  done | sort -u
}

need_packages $build_packages $host_packages $test_packages $tidy_packages
# Its own folder: it reads no precompiled headers, and the release build keeps its own.
configure release -B build/tidy -DQUOR_BUILD_BENCH=ON -DQUOR_BUILD_FUZZ=ON -DQUOR_PRECOMPILE=OFF \
  -DQUOR_BATCH=OFF
case ${1:-} in
  '') files=$(sources $tidy_folders | grep -v '\.h$') ;;
  --changed) files=$(changed_sources "${2:-$(base_commit)}") ;;
  *) files=$* ;;
esac
# This build has no WebAssembly.
files=$(printf '%s\n' $files | grep -v '/wasm_[a-z]*\.c$')
[ -n "$files" ] || exit 0
# The error channel carries only counts of what is suppressed in other people's headers.
printf '%s\n' $files |
  xargs -P "$(nproc)" -n 1 clang-tidy-14 -p build/tidy --quiet \
    --extra-arg=-Wno-unknown-warning-option --extra-arg=-I"$root/include" \
    --header-filter="^$root/($(echo $tidy_folders | tr ' ' '|'))/" 2>/dev/null
