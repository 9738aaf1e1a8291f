#!/bin/sh
# `quor format`: files in place, folders, what it refuses, and that nothing changes but the layout.
#   format_test.sh QUOR SAMPLES [EMULATOR]
set -u
. "$(dirname "$0")/support.sh"

mkdir -p scripts/deep
printf 'A:MA(C,5),COLORRED;B:C;' >scripts/a.quor
printf 'A : C;\n' >scripts/b.quor
printf 'A:C; // end\r\n' >scripts/deep/c.quor
chmod 640 scripts/a.quor
expect 1 'scripts/a.quor
scripts/deep/c.quor' format --check scripts
same "$(cat scripts/a.quor)" 'A:MA(C,5),COLORRED;B:C;' 'the checked file'
expect 0 'scripts/a.quor
scripts/deep/c.quor' format scripts
same "$(cat scripts/a.quor)" 'A : MA(C, 5), COLORRED;
B : C;' 'the formatted file'
same "$(od -c scripts/deep/c.quor | head -1)" "$(printf 'A : C; // end\r\n' | od -c | head -1)" 'its line ends'
same "$(ls scripts)" 'a.quor
b.quor
deep' 'the folder'
if [ -z "$emulator" ]; then
  same "$(stat -c %a scripts/a.quor)" 640 'its permissions'
  printf 'A:C;' >target.quor && ln -s target.quor link.quor
  expect 0 link.quor format link.quor
  same "$(readlink link.quor) $(cat target.quor)" 'target.quor A : C;' 'a link'
fi
expect 0 '' format scripts
expect 0 '' format --check scripts/a.quor scripts/b.quor

# What can't be read stays, and doesn't keep others from their layout.
printf "A:C;\nB:'open;\n" >open.quor
printf 'A:C;' >last.quor
expect 1 'quor: open.quor:2: a quote is left open or a comment cuts a statement here; quor check tells more
quor: none.quor: there is no such file
last.quor' format open.quor none.quor last.quor
same "$(cat open.quor)" "A:C;
B:'open;" 'the script that is left'

same "$(printf 'A:C;' | quor format --stdin)" 'A : C;' 'the filter'
printf 'A:C;' | quor format --stdin --check
same $? 1 'the status of the filter that checks'
printf 'A : C;\n' | quor format --stdin --check
same $? 0 'the same for a script in the layout'
expect 2 'quor: no script: give a file, a folder or --stdin' format
expect 2 'quor: --stdin takes no files' format --stdin a.quor

# The samples calculate and draw the same after it.
cp -r "$samples" copy && chmod -R u+w copy
quor format copy >/dev/null
for script in kdj macd bands showcase; do
  for command in 'run --csv' 'chart --out picture.svg'; do
    # shellcheck disable=SC2086
    before=$(quor $command "$samples/$script.quor" --bars "$samples/index-daily.csv" 2>/dev/null; cat picture.svg 2>/dev/null)
    # shellcheck disable=SC2086
    after=$(quor $command "copy/$script.quor" --bars "$samples/index-daily.csv" 2>/dev/null; cat picture.svg 2>/dev/null)
    same "$after" "$before" "quor $command of the formatted $script.quor"
  done
done

[ $failures -eq 0 ] || exit 1
