#!/usr/bin/env bash
# panel [CLOCKPANEL OPTIONS]: show a telephone in the browser; starts a host unless one is running
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

time_server=12123 # port of the panel's time server, for the host that this script starts
programs=$(folder_of default)/bin

# Starts a host and waits until it answers. It ends with this script.
start_host() {
  NTPCLIENT_PORT=$time_server "$programs/clockhost" 2>"$(folder_of default)/panel-host.log" &
  host=$!
  trap 'kill "$host" 2>/dev/null; wait "$host" || true' EXIT
  until "$programs/clockctl" status >/dev/null 2>&1; do
    kill -0 "$host" 2>/dev/null || { cat "$(folder_of default)/panel-host.log" >&2 && return 1; }
    sleep 0.1
  done
}

# The browser of the desktop, if there is one.
open_address() {
  local address
  read -r address
  echo "dev: the panel is at $address"
  if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && command -v xdg-open >/dev/null; then
    xdg-open "$address" >/dev/null 2>&1 || true
  fi
}

need run panel
configure default
build default ClockService clockhost clockctl ntpclient clockpanel
case " $* " in
  *' -h '* | *' --help '* | *' --version '*) exec "$programs/clockpanel" "$@" ;;
esac
options=()
if ! "$programs/clockctl" status >/dev/null 2>&1; then
  start_host
  options=(--time-server "$time_server")
fi
"$programs/clockpanel" "${options[@]}" "$@" > >(open_address; cat)
