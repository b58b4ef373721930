#!/usr/bin/env bash
# browser [--update] [--soak SECONDS] [TEST...]: tests of the panel's page in Chromium; --update takes its pictures anew
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run panel browser
configure default
build default ClockService clockhost clockctl ntpclient clockpanel
/usr/bin/python3 -B "$CLOCK_TREE/tests/browser/page.py" "$(folder_of default)/bin" "$@"
