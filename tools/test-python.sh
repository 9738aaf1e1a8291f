#!/bin/sh
# Installs what is missing, builds the Python package and runs its tests: from the build tree, and what
# pip makes of it in an environment of its own.
#   tools/test-python.sh [PYTEST ARGUMENTS]
set -u
. "$(dirname "$0")/lib.sh"

# Debian's packages serve Debian's Python, whatever else comes first on the path.
python=/usr/bin/python3
[ -x "$python" ] || python=python3

need_packages $build_packages $python_packages
"$python" -m flake8 --max-line-length=100 python tests/python || die "flake8 found the above"
cmake --preset python -DPython_EXECUTABLE="$python" >/dev/null ||
  die "the configuration of the Python package failed"
make_targets python quor_python quor_parser
QUOR_LIBRARY=$root/build/python/src/lib_quor_parser.so PYTHONPATH=$root/build/python/python \
  "$python" -m pytest -q -p no:cacheprovider "$@" tests/python || exit

# What is packed as sources is built without fetching anything, and installed.
environment=build/python-environment
packed=build/python-sources
rm -rf "$environment" "$packed"
tools/package.sh sdist "$packed" >/dev/null || exit
mkdir "$packed/offline"
printf '#!/bin/sh\nexit 1\n' >"$packed/offline/apt-get"
chmod +x "$packed/offline/apt-get"
"$python" -m venv --system-site-packages "$environment" || die "no environment for Python"
PATH=$root/$packed/offline:$PATH "$environment/bin/pip" install --quiet --no-build-isolation --no-deps \
  --no-index --disable-pip-version-check "$packed"/quor-*.tar.gz || die "pip can't install the package"
(cd / && "$root/$environment/bin/python" "$root/tests/python/installed.py")
