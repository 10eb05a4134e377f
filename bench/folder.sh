#!/usr/bin/env bash
# Times a folder of 10,000 small WAV files (a delivery of many takes, in
# 100 sub-folders, with a few broken ones among them), checked by
# sondara-check --jsonl and described by mediainfo --Output=JSON in the same
# run, with wall time and peak memory for each. The checker should be at
# least 20 times faster, and its memory should not grow with the number of
# files (it prints each file as it is checked). The folder is made once and
# read once before the first tool, so that every tool meets it in the cache.
# Usage: bench/folder.sh [folder for the files]   (default: bench/out)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

folder="$out/deliveries"
if [ ! -d "$folder" ]; then
  python3 - "$folder" <<'PY'
import os, struct, sys
root = sys.argv[1]
def wave(frames, data_size=None, tail=b""):
    fmt = b"fmt " + struct.pack("<IHHIIHH", 16, 1, 2, 44100, 176400, 4, 16)
    audio = bytes(frames * 4)
    size = len(audio) if data_size is None else data_size
    body = b"WAVE" + fmt + b"data" + struct.pack("<I", size) + audio
    return b"RIFF" + struct.pack("<I", len(body)) + body + tail
for folder in range(100):
    os.makedirs(os.path.join(root, f"take-{folder:03}"))
    for i in range(100):
        n = folder * 100 + i
        # One file in 50 unfinished, one in 70 with stray bytes behind it.
        bytes_ = wave(441 + n % 300, 0 if n % 50 == 7 else None, b"ab" if n % 70 == 3 else b"")
        with open(os.path.join(root, f"take-{folder:03}", f"{n:05}.wav"), "wb") as out:
            out.write(bytes_)
PY
fi

printf '%s (%s files)\n' "$folder" "$(find "$folder" -name '*.wav' | wc -l)"
cat "$folder"/*/*.wav >/dev/null
measure "sondara-check --jsonl" "$checker" --jsonl "$folder"
ours="$seconds"
measure "sondara-check --jsonl -j1" "$checker" --jsonl -j 1 "$folder"
if command -v mediainfo >/dev/null; then
  measure "mediainfo --Output=JSON" mediainfo --Output=JSON "$folder"
  theirs="$seconds"
  python3 -c "import sys; a, b = float(sys.argv[1]), float(sys.argv[2]); print(f'  mediainfo / sondara-check: {b / max(a, 0.01):.1f} (at least 20 wanted)')" "$ours" "$theirs"
fi
printf '  summary: %s\n' "$("$checker" --jsonl "$folder" | tail -n 1)"
