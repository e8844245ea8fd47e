#!/usr/bin/env bash
# Creates (once) the Wine prefix the Windows tests run in; WINEPREFIX defaults to ~/.wine-utils-controls.
# A prefix made before 32-bit Wine was installed has no 32-bit system folder and cannot start i686
# programs; it holds nothing but test state, so it is made anew.
set -euo pipefail
prefix="${WINEPREFIX:-$HOME/.wine-utils-controls}"
export WINEPREFIX="$prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
mkdir -p "$(dirname "$prefix")"
exec 7>"$prefix.create.lock"
flock 7
if [ -f "$prefix/system.reg" ] && [ -x /usr/lib/wine/wine ] && [ ! -e "$prefix/drive_c/windows/syswow64/kernel32.dll" ]; then
  echo "wine-prefix: $prefix predates 32-bit Wine; making it anew"
  wineserver -k >/dev/null 2>&1 || true
  rm -rf "$prefix"
fi
if [ ! -f "$prefix/system.reg" ]; then
  echo "wine-prefix: creating $prefix"
  wineboot --init >/dev/null 2>&1 || true
  wineserver -w || true
fi
[ -f "$prefix/system.reg" ] || { echo "wine-prefix: could not create $prefix" >&2; exit 1; }
# Windows unmanaged by a window manager: Xvfb runs none, and Wine waits 2 s for one on every hidden top-level window.
if ! grep -q '^"Managed"="N"' "$prefix/user.reg" 2>/dev/null; then
  wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 || true
fi
echo "wine-prefix: $prefix ready"
