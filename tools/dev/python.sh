#!/usr/bin/env bash
# python [PYTEST ARGUMENTS]: checks the Python client's types, builds and installs it offline, and tests it with the host
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

folder=$(folder_of python)
client=$CLOCK_TREE/clients/python
python=/usr/bin/python3 # Debian's, for which the packages are

check_types() {
  (cd "$client" && MYPYPATH=src:tests $python -m mypy --cache-dir "$folder/mypy" src tests)
}

# From a copy, so that nothing is written to the tree; the wheel is built from the sdist.
build_package() {
  cp -r "$client" "$folder/source"
  $python -m build --no-isolation --outdir "$folder/dist" "$folder/source" &&
    $python -m venv --system-site-packages "$folder/venv" &&
    "$folder/venv/bin/pip" install --no-index --no-build-isolation "$folder"/dist/deskclock-*.whl
}

need run python
configure default
build default ClockService clockhost clockctl ntpclient
mkdir -p "$folder"
rm -rf "$folder"/{source,dist,venv}
check_types
build_package >"$folder/build.log" 2>&1 || { cat "$folder/build.log" >&2 && exit 1; }
cd "$client"
export CLOCKHOST PYTHONDONTWRITEBYTECODE=1
CLOCKHOST=$(folder_of default)/bin/clockhost
exec "$folder/venv/bin/python" -X dev -m pytest -W error -p no:cacheprovider "$@" tests
