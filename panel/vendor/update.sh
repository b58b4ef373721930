#!/usr/bin/env bash
# Replaces the libraries of the page by these versions, from npm. Run it to update them; nothing is
# fetched when the panel is built or runs.
set -euo pipefail
cd -- "$(dirname -- "${BASH_SOURCE[0]}")"

temporary=$(mktemp -d)
trap 'rm -rf "$temporary"' EXIT

# package NAME VERSION: unpacks it into $temporary/NAME.
package() {
  mkdir "$temporary/$1"
  npm pack --silent --pack-destination "$temporary" "$1@$2" >/dev/null
  tar -xzf "$temporary/$1-$2.tgz" -C "$temporary/$1" --strip-components=1
}

package htm 3.1.1 # contains Preact 10 with its hooks
package preact 10.29.0
package uplot 1.6.32

cp "$temporary/htm/preact/standalone.module.js" preact.mjs
cp "$temporary/htm/LICENSE" LICENSE.htm
cp "$temporary/preact/LICENSE" LICENSE.preact
cp "$temporary/uplot/dist/uPlot.esm.js" uplot.mjs
cp "$temporary/uplot/dist/uPlot.min.css" uplot.css
cp "$temporary/uplot/LICENSE" LICENSE.uplot
