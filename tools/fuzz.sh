#!/bin/sh
# Installs what is missing, builds the fuzz targets with the sanitizers, replays the inputs that are
# kept, and fuzzes each target.
#   tools/fuzz.sh [SECONDS [TARGET...]]   30 seconds and all targets by default
#   tools/fuzz.sh --merge [TARGET...]     folds what fuzzing has found into fuzz/corpus
# An input that breaks a target is left in build/fuzz/findings; mend the fault and keep the input in
# fuzz/regressions. What reaches new code gathers in build/fuzz/corpus from run to run.
set -u
. "$(dirname "$0")/lib.sh"

out=build/fuzz
program=$out/fuzz/fuzz_

# The inputs of 'columns' are decisions, no text.
dictionary_of() {
  case $1 in
    rows | calendar) echo "-dict=$out/seeds/json.dict" ;;
    columns) ;;
    *) echo "-dict=$out/seeds/words.dict" ;;
  esac
}

# The folders of inputs that a target starts from, those that exist.
inputs_of() {
  for folder in fuzz/corpus fuzz/regressions $out/seeds; do
    [ ! -d "$folder/$1" ] || echo "$folder/$1"
  done
}

replay() {
  "$out/fuzz/replay_$1" $(inputs_of "$1") >"$out/replay_$1.log" 2>&1 || {
    tail -n 40 "$out/replay_$1.log"
    die "'$1' fails on an input that is kept, the last one named above"
  }
}

fuzz() {
  mkdir -p "$out/corpus/$1" "$out/findings"
  "$program$1" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -max_len=2048 \
    $(dictionary_of "$1") -artifact_prefix="$out/findings/$1-" \
    "$out/corpus/$1" $(inputs_of "$1") >"$out/fuzz_$1.log" 2>&1
}

# One target after the other, or as many at once as there are processors.
fuzz_all() {
  pids=
  for target in $targets; do
    fuzz "$target" &
    pids="$pids $target:$!"
    [ "$(echo $pids | wc -w)" -lt "$(nproc)" ] || wait_for_all
  done
  wait_for_all
}

wait_for_all() {
  for pair in $pids; do
    name=${pair%:*}
    if wait "${pair#*:}"; then
      echo "$name: $(grep -a '^Done' "$out/fuzz_$name.log")"
    else
      tail -n 40 "$out/fuzz_$name.log"
      die "'$name' has a finding; its input is in $out/findings"
    fi
  done
  pids=
}

# Keeps a small set of inputs that reaches all code that the corpora reach.
merge() {
  new=$out/merged/$1
  rm -rf "$new" && mkdir -p "$new" "$out/corpus/$1"
  "$program$1" -set_cover_merge=1 -use_counters=0 "$new" "$out/corpus/$1" $(inputs_of "$1") \
    >"$out/merge_$1.log" 2>&1 ||
    die "the merge of '$1' failed, see $out/merge_$1.log"
  rm -rf "fuzz/corpus/$1" && mkdir -p fuzz/corpus && mv "$new" "fuzz/corpus/$1"
}

seconds=30
case ${1:-} in
  --merge | [0-9]*) seconds=$1 && shift ;;
esac
targets=${*:-script rows calendar calls columns}

need_packages $build_packages $test_packages $fuzz_packages
cmake --preset fuzz >/dev/null || die "the configuration of 'fuzz' failed"
programs=write_seeds
for target in $targets; do programs="$programs fuzz_$target replay_$target"; done
cmake --build $out --target $programs -- --quiet || die "the build of 'fuzz' failed"
rm -rf "$out/seeds"
"$out/fuzz/write_seeds" "$out/seeds" samples || die "no seeds could be written"

if [ "$seconds" = --merge ]; then
  for target in $targets; do merge "$target"; done
else
  for target in $targets; do replay "$target"; done
  fuzz_all
fi
