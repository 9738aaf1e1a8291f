# How sources of Debian's packages are had, into folders below $work. To be sourced after lib.sh.

# A source package brings along the sources that it needs, and headers of Debian's packages: nothing is
# fetched then, and nothing installed.
brought=$root/sources

# The machine's own package sources, read for source packages instead. The folder of apt that holds
# them and all that apt keeps are private, so that the machine stays as it is.
derive_sources() {
  [ ! -d "$brought" ] || return 0
  apt=$work/apt
  rm -rf "$apt"
  mkdir -p "$apt/sources.list.d" "$apt/lists/partial" "$apt/cache/archives/partial"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$file" ] && sed -n 's/^[[:blank:]]*deb[[:blank:]]/deb-src /p' "$file"
  done >"$apt/sources.list"
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] || continue
    sed 's/^[Tt]ypes:.*/Types: deb-src/' "$file" >"$apt/sources.list.d/$(basename "$file")"
  done
  private_apt update >/dev/null 2>"$work/update.log" ||
    die "the lists of sources can't be had: $(cat "$work/update.log")"
}

private_apt() {
  apt-get -qq -o Dir::Etc::sourcelist="$apt/sources.list" \
    -o Dir::Etc::sourceparts="$apt/sources.list.d" -o Dir::State::lists="$apt/lists" \
    -o Dir::Cache="$apt/cache" -o APT::Sandbox::User=root "$@" </dev/null
}

# fetch_source PACKAGE: into the folder $work/PACKAGE
fetch_source() {
  rm -rf "$work/$1" "$work/fetched"
  mkdir -p "$work/fetched"
  if [ -d "$brought" ]; then
    cp -R "$brought/$1" "$work/$1" || die "the source of $1 can't be copied"
    return
  fi
  (cd "$work/fetched" && private_apt source "$1" >/dev/null 2>"$work/$1.log") ||
    die "the source of $1 can't be had: $(cat "$work/$1.log")"
  mv "$work/fetched/"*/ "$work/$1"
}
