#!/bin/sh
# Prints a checksum of the picture of each sample, which is the same on every system.
#   pictures.sh QUOR SAMPLES [EMULATOR]
set -u
. "$(dirname "$0")/support.sh"

# picture NAME ARGUMENTS...
picture() {
  name=$1
  shift
  quor chart "$@" --out picture.svg 2>/dev/null || exit
  echo "$(cksum <picture.svg) $name"
}

daily="--bars $samples/index-daily.csv"
for script in "$samples"/*.quor "$samples"/cookbook/*.quor; do
  picture "${script#"$samples"/}" "$script" $daily
done
picture 'five minutes, dark' "$samples/night.quor" --bars "$samples/night.csv" --theme dark \
  --code TEST --market NIGHT --calendar "$samples/night-calendar.json"
picture 'letters of many scripts' -e \
  "DRAWTEXT(C>O,H,'涨 up'); DRAWTEXT(C<O,L,'▼ <&> é Ж'); 均线:MA(C,5);" $daily --last 20
