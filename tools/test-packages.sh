#!/bin/sh
# Installs what is missing, makes the packages for Linux and tries them in roots of Debian that have
# little else. Needs root.
set -u
. "$(dirname "$0")/lib.sh"

[ "$(id -u)" -eq 0 ] || die "only root may change the root"
need_packages $try_packages
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
architecture=$(dpkg --print-architecture)
roots=$root/build/roots
expected=$root/examples/session.txt
mkdir -p "$roots"

# inside ROOT SCRIPT: runs a script of the shell in a root.
inside() {
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    unshare --mount --pid --fork --mount-proc="$roots/$1/proc" \
    chroot "$roots/$1" /bin/sh -euc "$2"
}

# says_session ROOT COMMAND: a client that must print what every client prints.
says_session() {
  inside "$1" "$2" >"$roots/printed" && cmp -s "$roots/printed" "$expected" ||
    die "in the root '$1' this doesn't say the session: $2"
}

tools/package.sh >"$roots/packages" || exit
say "Trying the packages"
# What is linked in, so that a program runs anywhere, is named in the copyright file.
lintian --allow-root --fail-on error,warning \
  --suppress-tags copyright-without-copyright-notice,embedded-library \
  dist/*_"$architecture".deb || die "lintian finds faults"

# A root with nothing but the least, and one to develop in, with all of the packages and clients built
# in every way.
rm -rf "${roots:?}/bare" "$roots/developer"
debootstrap --variant=minbase "$suite" "$roots/bare" >"$roots/bare.log" 2>&1 ||
  die "no root: $(tail -n 3 "$roots/bare.log")"
cp -a "$roots/bare" "$roots/developer"
cp /etc/resolv.conf "$roots/developer/etc"
cp dist/*_"$architecture".deb "$roots/developer"
inside developer '
  export DEBIAN_FRONTEND=noninteractive
  apt-get install -y --no-install-recommends g++ pkg-config fonts-dejavu-core /*.deb' \
  >"$roots/developer.log" 2>&1 || die "can't be installed: $(tail -n 3 "$roots/developer.log")"
inside developer '
  examples=/usr/share/doc/quor-parser/examples
  flags="-Wall -Wextra -Wpedantic -Werror $(pkg-config --cflags --libs quor_parser)"
  cc $examples/session.c $flags -o /session_c
  c++ -std=c++17 $examples/session.cpp $flags -o /session_cpp' ||
  die "the clients can't be built from the packages"
for client in /session_c /session_cpp; do
  says_session developer $client
done
inside developer '
  cd /usr/share/doc/quor-parser/samples
  quor chart showcase.quor --bars index-daily.csv --out /chart.png
  test -s /chart.png' || die "the installed program doesn't draw"
inside developer '
  cd /
  timeout --signal INT 5 quor studio --no-open || [ $? -eq 124 ]
  test -s /usr/share/quor/studio/studio.wasm' | grep -q token= ||
  die "the installed program has no studio"

# Nothing but the library.
cp dist/libquor-parser_*_"$architecture".deb "$roots/developer/session_c" "$roots/developer/session_cpp" \
  "$roots/bare"
inside bare 'dpkg -i /*.deb >/dev/null'
says_session bare /session_c
says_session bare /session_cpp
inside bare 'dpkg -P libquor-parser >/dev/null'

# The archive, and a copy of the one file, which nothing was installed for.
tar -C "$roots/bare" -xzf dist/quor-parser-*-linux-"$(uname -m)".tar.gz
mv "$roots/bare/quor-parser-"* "$roots/bare/quor"
inside bare 'mkdir /copy && cp /quor/lib/lib_quor_parser.so /copy'
says_session bare 'LD_LIBRARY_PATH=/copy /session_c'
inside bare '
  cd /quor/share/doc/quor-parser/samples
  /quor/bin/quor run kdj.quor --bars index-daily.csv --last 1 2>/dev/null' |
  grep -q '^date' || die "the program of the archive doesn't run"
inside bare '/quor/bin/quor chart -e "A:C;" --bars /none.csv --out /chart.png || true' 2>&1 |
  grep -q 'libcairo\|libpango' || die "the program of the archive doesn't say what chart lacks"
say "The packages run"
rm -rf "$roots/developer" "$roots/bare"
