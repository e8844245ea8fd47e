#!/usr/bin/env bash
# Installs everything a fresh Debian machine lacks to build and test utils_controls; idempotent, run as root.
set -euo pipefail

export DEBIAN_FRONTEND=noninteractive
here="$(cd "$(dirname "$0")/.." && pwd)"

pkgs=(
  build-essential cmake ninja-build pkg-config
  clang libclang-rt-14-dev
  libpugixml-dev libgtest-dev libgmock-dev googletest libbenchmark-dev libeigen3-dev
  mingw-w64 g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix
  wine wine64 xvfb xauth fonts-dejavu-core fonts-liberation
  socat
)

missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

# 32-bit Wine runs the console's real i686 target; it needs the i386 architecture.
# Tried once per machine: when Debian cannot resolve it (i386 lists out of step), later runs do not retry.
marker=/var/lib/utils-controls/wine32-tried
want_wine32=${UC_WINE32:-1}
if [ "$want_wine32" = 1 ] && [ ! -e "$marker" ] && ! dpkg-query -W -f='${Status}' wine32:i386 2>/dev/null | grep -q 'install ok installed'; then
  dpkg --print-foreign-architectures | grep -qx i386 || { dpkg --add-architecture i386; need_update=1; }
  missing+=(wine32:i386)
fi

if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  apt-get update -qq || echo "setup: apt-get update reported errors; continuing with the lists it has"
  if ! apt-get install -y -qq --no-install-recommends "${missing[@]}"; then
    # wine32 is optional: without it the 32-bit tests say plainly that they were skipped.
    filtered=()
    for p in "${missing[@]}"; do [ "$p" = wine32:i386 ] || filtered+=("$p"); done
    echo "setup: retrying without wine32:i386"
    [ ${#filtered[@]} -gt 0 ] && apt-get install -y -qq --no-install-recommends "${filtered[@]}"
  fi
fi
mkdir -p "$(dirname "$marker")" && touch "$marker"

# MinGW must use the POSIX thread model: std::thread and std::mutex need it.
for arch in x86_64 i686; do
  for tool in gcc g++; do
    alt="/usr/bin/${arch}-w64-mingw32-${tool}-posix"
    [ -x "$alt" ] && update-alternatives --set "${arch}-w64-mingw32-${tool}" "$alt" >/dev/null 2>&1 || true
  done
done

"$here/scripts/wine-prefix.sh"
echo "setup: done"
