#!/usr/bin/env bash
# Takes the picture of the window in the documents: the real Sondara.exe
# under Wine, driven by the end-to-end tests' helpers, after a check of a
# copy of samples/unfinished-16bit-stereo.wav that lies in the Wine prefix's
# own drive as C:\録音\take1.wav, so that the picture names no folder of the
# machine it was taken on.
#
#   tools/window-picture.sh [PNG]      (default docs/window.png)
#
# Builds Sondara.exe and window-probe (windows preset) when they are out of
# date; SONDARA_JOBS sets the build's jobs.
set -euo pipefail

picture="$(realpath -m -- "${1:-docs/window.png}")"
cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake --preset windows </dev/null >/dev/null
cmake --build --preset windows --target Sondara window-probe -j "${SONDARA_JOBS:-$(nproc)}" </dev/null

# shellcheck source=scripts/wine-env.sh
source scripts/wine-env.sh
sondara_wine_begin </dev/null
trap sondara_wine_end EXIT
sondara_wine_japanese_locale

folder="$WINEPREFIX/drive_c/録音"
mkdir -p "$folder" build/window-picture
cp samples/unfinished-16bit-stereo.wav "$folder/take1.wav"
python3 -B tests/e2e/show.py --build build/windows --out build/window-picture --screenshot "$picture" \
    --as 'C:\録音\take1.wav' "$folder/take1.wav" </dev/null
echo "window-picture: $picture"
