#!/bin/sh
# Draws the pictures of docs/gallery.md anew, each on a light and on a dark ground.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages $font_packages pngquant optipng
build release -DQUOR_BUILD_TESTS=OFF
folder=docs/gallery
mkdir -p "$folder"

# picture NAME ARGUMENTS...: what `quor chart` draws, in 256 colours at most.
picture() {
  name=$1
  shift
  for theme in light dark; do
    file=$folder/$name-$theme.png
    build/release/host/quor chart "$@" --theme "$theme" --out "$file" &&
      pngquant --force --skip-if-larger --speed 1 --output "$file" "$file" &&
      optipng -quiet -o2 "$file" || die "$name could not be drawn"
  done
}

daily="--bars samples/index-daily.csv"
for script in showcase showcase-marks showcase-figures; do
  picture "$script" "samples/$script.quor" $daily
done
picture macd samples/cookbook/macd.quor $daily
picture kdj samples/cookbook/kdj.quor $daily --last 150
picture boll samples/cookbook/boll.quor $daily --last 180
picture rsi samples/cookbook/rsi.quor $daily --last 180
picture donchian samples/cookbook/donchian.quor $daily --last 250
picture trailing_stop samples/cookbook/trailing_stop.quor $daily --last 250
picture night samples/night.quor --bars samples/night.csv --period 0x3005 --code TEST \
  --market NIGHT --calendar samples/night-calendar.json
picture history -e 'MA60:MA(C,60);MA250:MA(C,250);' $daily --last 5105
