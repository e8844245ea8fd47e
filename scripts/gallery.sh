#!/usr/bin/env bash
# Renders a button style file (default: the sample samples/protocol/ButtonStyles.xml) to a PNG gallery under Wine,
# drawn by the library's own GDI+ face painting, and saves pictures of the console dialogs as their real controls
# draw them (uctool ui --screenshot) next to it, in ui/. Builds the win64 tool first when needed.
#   bash scripts/gallery.sh [STYLE_FILE [OUT_PNG]] [--size WxH] [--console-type N] [--left]
# Default output: build/gallery/ButtonStyles.png. UC_GALLERY_BUILD picks the build folder (default build/win64).
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
cd "$here"

positional=()
options=()
while [ $# -gt 0 ]; do
  case "$1" in
    --size|--console-type) options+=("$1" "$2"); shift 2 ;;
    --*) options+=("$1"); shift ;;
    *) positional+=("$1"); shift ;;
  esac
done
styles="$(realpath "${positional[0]:-samples/protocol/ButtonStyles.xml}")"
out="${positional[1]:-build/gallery/ButtonStyles.png}"
mkdir -p "$(dirname "$out")"
out="$(realpath "$(dirname "$out")")/$(basename "$out")"
build="${UC_GALLERY_BUILD:-build/win64}"

if ! command -v x86_64-w64-mingw32-g++-posix >/dev/null || ! command -v wine >/dev/null || ! command -v Xvfb >/dev/null; then
  echo "gallery: installing the Windows toolchain and Wine (scripts/setup.sh)"
  bash scripts/setup.sh
fi
[ -f "$build/build.ninja" ] || cmake --preset win64 -B "$build" >/dev/null
cmake --build "$build" --target uctool -j2 >/dev/null

to_win() { local p="$1"; echo "Z:${p//\//\\}"; }
scripts/wine-run.sh "$build/tools/uctool/uctool.exe" style gallery "$(to_win "$styles")" \
  --out "$(to_win "$out")" ${options[@]+"${options[@]}"}
[ -s "$out" ] || { echo "gallery: no picture was written" >&2; exit 1; }
echo "gallery: $out"

shots="$(dirname "$out")/ui"
mkdir -p "$shots"
scripts/wine-run.sh "$build/tools/uctool/uctool.exe" ui --screenshot "$(to_win "$shots")" >/dev/null
for f in console message_box please_wait property_sheet tabbed_dialog; do
  [ -s "$shots/$f.png" ] || { echo "gallery: no picture of $f was written" >&2; exit 1; }
done
echo "gallery: $shots/*.png"
