#!/usr/bin/env bash
# Runs a Windows test program under Wine with null-modem pairs of COM ports. Each pair is two ptys joined
# by socat; the Wine prefix's dosdevices/comN symlinks point at them (Wine opens COMn through
# $WINEPREFIX/dosdevices/comN). Exports UC_TEST_COM_PAIRS="console:device,..." for the test's lines.
set -u
here="$(cd "$(dirname "$0")" && pwd)"
root="$(cd "$here/../../.." && pwd)"
# A prefix of its own: its win.ini ("System"/"_IsUpdating") and dosdevices are then not shared with other
# Windows tests that may run at the same time.
export WINEPREFIX="${UC_COM_WINEPREFIX:-$HOME/.wine-utils-controls-com}"
pairs="${UC_COM_PAIR_COUNT:-3}"
dos="$WINEPREFIX/dosdevices"
work="$(mktemp -d /tmp/uc-com-pairs-XXXXXX)"
pids=()
links=()

cleanup() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null; done
  for l in "${links[@]}"; do rm -f "$l"; done
  rm -rf "$work"
}
trap cleanup EXIT

if ! command -v socat >/dev/null; then
  echo "com-pairs: socat is missing (scripts/setup.sh installs it)" >&2
  exit 1
fi
mkdir -p "$(dirname "$WINEPREFIX")"
(
  flock 8
  "$root/scripts/wine-prefix.sh" >/dev/null
) 8>"$WINEPREFIX.lock"
mkdir -p "$dos"

# Choose free COM numbers from 40 up under a lock, so parallel test runs do not collide.
exec 9>"$dos/.uc-com-pairs.lock"
flock 9
pairs_list=""
n=40
for i in $(seq 1 "$pairs"); do
  while [ -e "$dos/com$n" ] || [ -e "$dos/com$((n + 1))" ]; do n=$((n + 2)); done
  socat pty,raw,echo=0,link="$work/a$i" pty,raw,echo=0,link="$work/b$i" 2>/dev/null &
  pids+=($!)
  for _ in $(seq 100); do [ -e "$work/a$i" ] && [ -e "$work/b$i" ] && break; sleep 0.05; done
  a="$(readlink -f "$work/a$i")"
  b="$(readlink -f "$work/b$i")"
  if [ ! -e "$a" ] || [ ! -e "$b" ]; then
    echo "com-pairs: socat did not create pair $i" >&2
    exit 1
  fi
  # Keep both slaves open here: socat would end the pair at the first hang-up when a test closes a port.
  eval "exec {fa}<>\"$a\" {fb}<>\"$b\""
  ln -s "$a" "$dos/com$n"
  ln -s "$b" "$dos/com$((n + 1))"
  links+=("$dos/com$n" "$dos/com$((n + 1))")
  pairs_list="${pairs_list:+$pairs_list,}$n:$((n + 1))"
  n=$((n + 2))
done
flock -u 9
export UC_TEST_COM_PAIRS="$pairs_list"
"$root/scripts/wine-run.sh" "$@"
