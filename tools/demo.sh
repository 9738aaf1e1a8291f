#!/bin/sh
# Installs what is missing, builds, and runs a script over real daily bars.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $chart_packages $font_packages
configure release -DQUOR_BUILD_TESTS=OFF -DQUOR_BUILD_LSP=OFF -DQUOR_BUILD_STUDIO=OFF
make_targets release quor
quor=build/release/host/quor

show() {
  echo
  echo "\$ quor $*"
  "$quor" "$@"
}

cat samples/averages.quor
show check samples/averages.quor &&
  show run samples/averages.quor --bars samples/index-daily.csv --last 15 &&
  show chart samples/showcase.quor --bars samples/index-daily.csv --out demo.svg &&
  show chart samples/showcase.quor --bars samples/index-daily.csv --out demo.png &&
  show chart samples/showcase-marks.quor --bars samples/index-daily.csv --out demo-marks.png &&
  show chart samples/showcase-figures.quor --bars samples/index-daily.csv --out demo-figures.png &&
  echo && echo "Wrote demo.svg and demo.png, demo-marks.png and demo-figures.png: what the showcases draw"
