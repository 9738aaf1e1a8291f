#!/bin/sh
# Makes all that a release has in dist/, with checksums in dist/SHA256SUMS.
#   tools/release.sh                 everything
#   tools/release.sh npm editors     these parts alone; the checksums are those of what they made
#   linux    packages for Debian, and an archive for any Linux
#   arm64    the same for 64-bit ARM
#   windows  an archive
#   python   a wheel
#   npm      the package for JavaScript
#   editors  the extension
#   manual   the manual as one page
set -u
. "$(dirname "$0")/lib.sh"

parts="linux arm64 windows python npm editors manual"
version=$(sed -n 's/^project([a-z_]* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
for part in "$@"; do
  case " $parts " in
    *" $part "*) ;;
    *) die "there is no part '$part'; there are: $parts" ;;
  esac
done
[ $# -gt 0 ] || set -- $parts

cmake -DVERSION="$version" -DSOURCES="$root" -P tests/versions.cmake || die "mend the versions first"
! grep -q '^## Unreleased' CHANGELOG.md ||
  say "CHANGELOG.md has changes that are in no version: a release names them ## NUMBER"

# What is made, one part after the other; each prints the files.
make() {
  case $1 in
    linux) tools/package.sh ;;
    npm)
      tools/build-npm.sh pack >&2 || return
      echo "dist/quor-$version.tgz"
      ;;
    editors)
      tools/test-editors.sh >&2 || return
      cp editors/code/build/quor.vsix "dist/quor-$version.vsix" || return
      echo "dist/quor-$version.vsix"
      ;;
    manual)
      tools/build-manual.sh >&2 || return
      cp build/manual/manual.html "dist/quor-manual-$version.html" || return
      echo "dist/quor-manual-$version.html"
      ;;
    *) tools/package.sh "$1" ;;
  esac
}

rm -rf dist && mkdir dist || exit
made=$(mktemp)
trap 'rm -f "$made"' EXIT
for part in "$@"; do
  say "== $part"
  make "$part" >>"$made" || die "the part '$part' could not be made"
done
while read -r file; do
  [ -s "$file" ] || die "$file is missing"
  basename "$file"
done <"$made" | sort -u >dist/names || exit
(cd dist && xargs sha256sum <names >SHA256SUMS && rm names) || die "the checksums could not be made"
cat dist/SHA256SUMS
