#!/bin/sh
# Lines of code and of tests, blank lines left out.
set -u
. "$(dirname "$0")/lib.sh"

count() {
  git ls-files --cached --others --exclude-standard -- "$@" | while read -r file; do
    [ -f "$file" ] && cat "$file"
  done | grep -c '[^[:space:]]'
}

code=$(count include src advice host python web/src)
tests=$(count tests web/test)
for folder in include src advice host python web/src; do
  printf '%-10s%7d\n' "$folder" "$(count "$folder")"
done
printf '%-10s%7d\n' tests "$tests"
echo "tests are $((tests * 100 / (code + tests)))% of $((code + tests)) lines"
