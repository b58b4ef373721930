#!/usr/bin/env bash
# readme: run the commands of the README and of other documents, and compare what they print
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
cd "$CLOCK_TREE"

state=$(folder_of default)/run
kept=$state.kept

# Each document begins with a first start: the state that a host has saved here is moved away and back.
put_aside() {
  if ./dev ctl status >/dev/null 2>&1; then
    echo 'dev: a host is running here; end it first' >&2
    return 1
  fi
  if [ -e "$state" ]; then mv -T "$state" "$kept"; fi
}

put_back() {
  rm -rf "$state" build/{a,b}
  if [ -e "$kept" ]; then mv -T "$kept" "$state"; fi
}

need run test
put_aside
trap put_back EXIT
# Where a document has no ./dev, the programs are installed.
PATH=$(folder_of default)/bin:$PATH
for document in README.md docs/how-to/{test-a-telephone,two-telephones,write-a-scenario,why-is-the-time-wrong}.md \
  docs/how-to/{run-as-a-service,many-machines,integrate-into-a-framework}.md docs/explanation/time-changes.md; do
  rm -rf "$state" build/{a,b}
  python3 -B tools/dev/readme.py "$document"
done
