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
  python3-numpy
  python3-pil
  xorriso  # third-party ISO 9660/Joliet reader that checks the simulated disc-writing library's images
)

missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  apt-get update -qq || echo "setup: apt-get update reported errors; continuing with the lists it has"
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# 32-bit Wine runs the console's real i686 target. It is optional: without it the win32 tests say plainly
# that they were skipped. Debian's i386 lists can lag the amd64 ones (a mirror without the i386 security
# index): a library already installed at a version the i386 lists lack blocks its i386 twin, and apt would
# rather remove wine64 than wait. So install from the release itself, bring each such library to the
# version both architectures have, and refuse any plan that removes a package.
# Tried once per machine; UC_WINE32=0 skips it.
installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }
install_wine32() {
  local release pins=() pkg have want plan shared=() line
  declare -A offered=()
  release="$(. /etc/os-release && echo "${VERSION_CODENAME:-}")"
  [ -n "$release" ] || return 1
  dpkg --print-foreign-architectures | grep -qx i386 || dpkg --add-architecture i386
  apt-get update -qq || echo "setup: apt-get update reported errors; continuing with the lists it has"
  # Libraries wine32 pulls in whose amd64 twin is installed and must match it (Multi-Arch: same).
  for pkg in $(apt-cache depends --recurse --no-recommends --no-suggests --no-conflicts --no-breaks \
                 --no-replaces --no-enhances wine32:i386 2>/dev/null | sed -n 's/^\([^ <]*\):i386$/\1/p' | sort -u); do
    [ "$(dpkg-query -W -f='${Status} ${Multi-Arch}' "$pkg:amd64" 2>/dev/null)" = "install ok installed same" ] && shared+=("$pkg")
  done
  if [ ${#shared[@]} -gt 0 ]; then
    # "name:arch version" for every version the lists offer, newest first.
    while read -r line; do offered["${line% *}"]+="${line##* } "; done < <(
      apt-cache madison "${shared[@]/%/:i386}" "${shared[@]}" 2>/dev/null |
        awk -F'|' '{gsub(/ /, "", $1); sub(/:.*/, "", $1); gsub(/ /, "", $2); split($3, w, " "); print $1 ":" w[length(w)-1] " " $2}')
  fi
  for pkg in ${shared[@]+"${shared[@]}"}; do
    have="$(dpkg-query -W -f='${Version}' "$pkg:amd64")"
    [[ " ${offered[$pkg:i386]:-} " == *" $have "* ]] && continue
    want="${offered[$pkg:i386]%% *}"
    [ -n "$want" ] && [[ " ${offered[$pkg:amd64]:-} " == *" $want "* ]] || continue
    pins+=("$pkg:amd64=$want" "$pkg:i386=$want")
  done
  plan="$(apt-get install -s -t "$release" --allow-downgrades --no-install-recommends wine32:i386 ${pins[@]+"${pins[@]}"} 2>&1)" || {
    echo "setup: wine32:i386 cannot be resolved here:"; echo "$plan" | grep -E '^ |^E:' | head -8; return 1; }
  if echo "$plan" | grep -q '^Remv '; then
    echo "setup: installing wine32:i386 would remove packages; not installing it:"; echo "$plan" | grep '^Remv ' | head -8
    return 1
  fi
  [ ${#pins[@]} -gt 0 ] && echo "setup: matching i386 and amd64 versions: ${pins[*]}"
  apt-get install -y -qq -t "$release" --allow-downgrades --no-install-recommends wine32:i386 ${pins[@]+"${pins[@]}"}
}
marker=/var/lib/utils-controls/wine32-tried-v2
if [ "${UC_WINE32:-1}" = 1 ] && [ ! -e "$marker" ] && ! installed wine32:i386; then
  echo "setup: installing 32-bit Wine (wine32:i386)"
  install_wine32 || echo "setup: 32-bit Wine is not installed; the win32 tests will be skipped"
  mkdir -p "$(dirname "$marker")" && touch "$marker"
fi

# MinGW must use the POSIX thread model: std::thread and std::mutex need it.
for arch in x86_64 i686; do
  for tool in gcc g++; do
    alt="/usr/bin/${arch}-w64-mingw32-${tool}-posix"
    [ -x "$alt" ] && update-alternatives --set "${arch}-w64-mingw32-${tool}" "$alt" >/dev/null 2>&1 || true
  done
done

"$here/scripts/wine-prefix.sh"
echo "setup: done"
