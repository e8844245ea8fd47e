#!/usr/bin/env bash
# Creates (once) the Wine prefix the Windows tests run in; WINEPREFIX defaults to ~/.wine-utils-controls.
set -euo pipefail
prefix="${WINEPREFIX:-$HOME/.wine-utils-controls}"
export WINEPREFIX="$prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -f "$prefix/system.reg" ]; then
  echo "wine-prefix: creating $prefix"
  wineboot --init >/dev/null 2>&1 || true
  wineserver -w || true
fi
[ -f "$prefix/system.reg" ] || { echo "wine-prefix: could not create $prefix" >&2; exit 1; }
echo "wine-prefix: $prefix ready"
