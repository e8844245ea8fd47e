#!/usr/bin/env bash
# Runs one Windows program under Wine for CTest. Wine exits 0 even when it cannot start a program,
# so the test main writes a marker file and a run without it fails here.
set -u
export WINEPREFIX="${WINEPREFIX:-$HOME/.wine-utils-controls}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"

to_win() { local p="$1"; echo "Z:${p//\//\\}"; }

# Windows programs see Unix paths through drive Z:.
for var in UC_TEST_SOURCE_DIR UC_DATA_DIR UC_TEST_DATA; do
  v="${!var:-}"
  [[ "$v" == /* ]] && export "$var=$(to_win "$v")"
done

# Windows that tests open need an X display; start one private Xvfb when none is set.
if [ -z "${DISPLAY:-}" ]; then
  export DISPLAY=:87
  if [ ! -e /tmp/.X11-unix/X87 ]; then
    (setsid Xvfb :87 -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &)
    for _ in $(seq 50); do [ -e /tmp/.X11-unix/X87 ] && break; sleep 0.1; done
  fi
fi

marker="$(mktemp /tmp/uc-run-XXXXXX)"
export UC_RUN_MARKER="$(to_win "$marker")"
wineserver -p >/dev/null 2>&1 || true
# Wine's helper processes (services.exe, explorer.exe, ...) started by a run outlive it and inherit its
# output; holding CTest's pipe open they would make CTest wait for the time-out. Output goes via files.
out="$(mktemp /tmp/uc-out-XXXXXX)"
err="$(mktemp /tmp/uc-err-XXXXXX)"
wine "$@" >"$out" 2>"$err" </dev/null
rc=$?
cat "$out"
cat "$err" >&2
rm -f "$out" "$err"
if [ ! -s "$marker" ]; then
  echo "wine-run: Wine did not start $1 (no 32-bit Wine, or a broken prefix)" >&2
  rc=127
fi
rm -f "$marker"
exit $rc
