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

# Windows that tests open need an X display: a private Xvfb, never the user's screen, unless UC_TEST_DISPLAY
# names one. It is started once under a lock and found again through its state file; a stale socket or a
# dead server from an earlier run is not trusted, since Wine without a display fails every window it makes.
private_display() {
  local state="/tmp/uc-xvfb-$(id -u)" pid disp ready
  exec 8>"$state.lock"
  flock 8
  if read -r pid disp <"$state" 2>/dev/null && kill -0 "$pid" 2>/dev/null && [ -S "/tmp/.X11-unix/X$disp" ]; then
    DISPLAY=":$disp"; exec 8>&-; return 0
  fi
  ready="$(mktemp /tmp/uc-xvfb-ready-XXXXXX)"
  # -displayfd picks a free display and writes its number once the server accepts connections.
  setsid Xvfb -displayfd 9 -screen 0 1280x1024x24 -nolisten tcp 9>"$ready" 8>&- >/dev/null 2>&1 </dev/null &
  pid=$!
  disp=""
  for _ in $(seq 300); do
    disp="$(tr -dc 0-9 <"$ready")"
    [ -n "$disp" ] && break
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  rm -f "$ready"
  if [ -z "$disp" ] || ! kill -0 "$pid" 2>/dev/null; then
    echo "wine-run: Xvfb did not start; tests that open windows will fail" >&2
    exec 8>&-; return 1
  fi
  echo "$pid $disp" >"$state"
  DISPLAY=":$disp"; exec 8>&-
}
if [ -n "${UC_TEST_DISPLAY:-}" ]; then
  DISPLAY="$UC_TEST_DISPLAY"
else
  private_display || true
fi
export DISPLAY

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
