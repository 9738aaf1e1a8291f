# What the commands in this folder share. To be sourced.

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root" || exit 1

library_packages="g++ cmake ninja-build ccache dpkg-dev libfast-float-dev"
build_packages=$library_packages
studio_packages="nlohmann-json3-dev"
chart_packages="libcli11-dev zlib1g-dev pkg-config libcairo2-dev libpango1.0-dev"
host_packages="$chart_packages $studio_packages"
font_packages="fonts-dejavu-core fonts-noto-cjk fonts-noto-color-emoji"
test_packages="libgtest-dev binutils python3 mono-mcs mono-runtime"
windows_packages="g++-mingw-w64-x86-64-posix cmake ninja-build ccache dpkg-dev googletest libcli11-dev libfast-float-dev llvm-14
$studio_packages"
windows_test_packages="clang-14 lld-14"
arm64_packages="g++-aarch64-linux-gnu cmake ninja-build ccache dpkg-dev googletest libcli11-dev libfast-float-dev
$studio_packages"
arm64_test_packages="qemu-user"
wasm_packages="clang-19 lld-19 llvm-19 wasi-libc libclang-rt-19-dev-wasm32 cmake ninja-build ccache dpkg-dev libfast-float-dev"
python_packages="python3 python3-dev python3-venv python3-pip python3-setuptools python3-wheel pybind11-dev
python3-pybind11 python3-numpy python3-pandas python3-pytest python3-distributed python3-tqdm python3-flake8
mypy"
wine_packages="wine wine64"
format_packages="clang-format-14"
tidy_packages="clang-tidy-14"
package_packages="dpkg-dev file"
try_packages="debootstrap lintian"
fuzz_packages="clang-14 libclang-rt-14-dev"
coverage_packages="gcovr"

say() { echo "$*" >&2; }

die() {
  say "$(basename "$0"): $*"
  exit 1
}

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# The given Debian packages, installed if need be.
need_packages() {
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    need_tools "$@"
    return
  fi
  missing=
  for package in "$@"; do
    is_installed "$package" || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  install_packages $missing
}

install_packages() {
  if [ "$(id -u)" -eq 0 ]; then
    as_root=
  elif command -v sudo >/dev/null && [ -t 0 ]; then
    as_root=sudo
  elif command -v sudo >/dev/null; then
    as_root="sudo -n"
  else
    die "these packages are missing, and without root or sudo they can't be installed here: $*"
  fi
  say "Installing $*"
  $as_root apt-get update -qq </dev/null &&
    $as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y -qq --no-install-recommends "$@" </dev/null >/dev/null ||
    die "apt-get could not install: $*"
}

# Without Debian's package tools the least is to name what isn't there.
need_tools() {
  for tool in c++ cmake ninja; do
    command -v "$tool" >/dev/null ||
      die "'$tool' is missing and this machine has no apt-get; needed, by their Debian names: $*"
  done
}

# Configures a preset with all of the usual parts; further arguments may leave some out.
configure() {
  preset=$1
  shift
  cmake --preset "$preset" -DQUOR_BUILD_HOST=ON -DQUOR_BUILD_LSP=ON -DQUOR_BUILD_STUDIO=ON \
    -DQUOR_BUILD_TESTS=ON "$@" >/dev/null ||
    die "the configuration of '$preset' failed"
}

build() {
  configure "$@"
  make_targets "$1" all
}

# Builds targets of a preset that is configured.
make_targets() {
  preset=$1
  shift
  quiet=--quiet
  [ ! -t 1 ] || quiet=
  cmake --build "build/$preset" --target "$@" -- $quiet || die "the build of '$preset' failed"
}

# The C and C++ files of the given folders that git knows or could take.
sources() {
  for folder in "$@"; do
    git ls-files --cached --others --exclude-standard -- \
      "$folder/*.c" "$folder/*.cpp" "$folder/*.h" "$folder/*.hpp"
  done | while read -r file; do
    [ -f "$file" ] && echo "$file"
  done
}

folders="include src advice bars host python npm web examples tests bench fuzz"
