#!/bin/sh
# Lines of code and of tests, blank lines left out.
set -u
. "$(dirname "$0")/lib.sh"

count() {
  git ls-files --cached --others --exclude-standard -- "$@" | while read -r file; do
    [ -f "$file" ] && cat "$file"
  done | grep -c '[^[:space:]]'
}

tested="include src advice bars host python web editors"
tests="tests web/test* editors/code/test*"
not_code=":!web/test* :!editors/code/test* :!*/package-lock.json"

for folder in $tested; do
  [ -d "$folder" ] && printf '%-10s%7d\n' "$folder" "$(count "$folder" $not_code)"
done
lines=$(count $tests)
code=$(count $tested $not_code)
printf '%-10s%7d\n' tests "$lines"
echo "tests are $((lines * 100 / code))% of the $code lines of code, $((lines * 100 / (code + lines)))% of all"
