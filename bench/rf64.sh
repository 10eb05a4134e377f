#!/usr/bin/env bash
# Files past 4 GiB: a 5 GiB RF64 file and a RIFF file whose unfinished
# header leaves 5 GiB of audio, both sparse but for a tone in their first
# 16 MiB. Each is listed, measured beside sox, and mended; the mended RIFF
# file comes out as RF64 (it passes 4 GiB), which sox must read with the
# same levels. Fails on the first disagreement. The copies take 10 GiB of
# real disk while it runs; they are removed at the end.
# Usage: bench/rf64.sh [folder for the files]   (default: bench/out)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

rf64="$out/sparse-5gib.rf64.wav"
riff="$out/unfinished-5gib.wav"
python3 - "$rf64" "$riff" <<'PY'
import math, os, struct, sys
size = 5 * 1024 ** 3
fmt = b"fmt " + struct.pack("<IHHIIHH", 16, 1, 2, 48000, 192000, 4, 16)
tone = b"".join(struct.pack("<hh", int(8000 * math.sin(i / 20)), int(-4000 * math.sin(i / 7)))
                for i in range(4 * 1024 * 1024))
def write(path, head):
    with open(path, "wb") as out:
        out.write(head + tone)
        out.truncate(size)
ds64 = b"ds64" + struct.pack("<IQQQI", 28, size - 8, size - 80, (size - 80) // 4, 0)
write(sys.argv[1], b"RF64" + struct.pack("<I", 0xFFFFFFFF) + b"WAVE" + ds64 + fmt + b"data" + struct.pack("<I", 0xFFFFFFFF))
write(sys.argv[2], b"RIFF" + struct.pack("<I", 0xFFFFFFFF) + b"WAVE" + fmt + b"data" + struct.pack("<I", 0xFFFFFFFF))
PY

levels_agree() {
  python3 - "$checker" "$1" <<'PY'
import json, subprocess, sys
checker, path = sys.argv[1:]
ours = json.loads(subprocess.run([checker, "--json", "--levels", path], capture_output=True, text=True).stdout)[0]
text = subprocess.run(["sox", path, "-n", "stats"], capture_output=True, text=True).stderr
rows = {}
for line in text.splitlines():
    words = line.split()
    values = []
    while words and words[-1].lstrip("-").replace(".", "", 1).isdigit():
        values.insert(0, float(words.pop()))
    if words and values:
        rows[" ".join(words)] = values[1:] if len(values) > 1 else values
for channel, levels in enumerate(ours["channels"]):
    for key, row in (("peak", "Pk lev dB"), ("rms", "RMS lev dB")):
        if abs(levels[key] - rows[row][channel]) > 0.01:
            sys.exit(f"{path}: channel {channel + 1}: {key} {levels[key]} against sox's {rows[row][channel]}")
print(f"  levels of {ours['frames']:,} frames agree with sox")
PY
}

for file in "$rf64" "$riff"; do
  printf '%s\n' "$file"
  # A RIFF file past 4 GiB: behind its data chunk the reader meets the
  # rest of the audio as chunks, millions of them; the first lines tell.
  "$checker" --chunks "$file" | head -n 8 | sed 's/^/  /' || true
  measure "sondara-check --levels" "$checker" --levels "$file"
  measure "sox stats" sox "$file" -n stats
  copy="$file.mended.wav"
  rm -f "$copy"
  measure "sondara-check --tidy" "$checker" --tidy "$copy" "$file"
  "$checker" --chunks "$copy" | sed 's/^/  copy: /'
  head -c 4 "$copy" | grep -q RF64 || { echo "the copy of $file is not RF64" >&2; exit 1; }
  levels_agree "$copy"
  rm -f "$copy"
done
