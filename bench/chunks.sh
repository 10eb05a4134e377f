#!/usr/bin/env bash
# Times files of very many chunks: 1, 3 and 10 million empty "junk" chunks
# before "fmt " and "data". Each file is checked by sondara-check and by
# mediainfo in the same run, and listed (--chunks) and copied (--tidy) by
# sondara-check, with wall time and peak memory for each. The check should
# take a constant time per chunk and memory that doesn't grow with them;
# the copy, about 16 bytes a chunk. The files are made
# once and read once before the first tool, so that every tool meets them in
# the cache.
# Usage: bench/chunks.sh [folder for the files]   (default: bench/out)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

for millions in 1 3 10; do
  file="$out/junk-${millions}m.wav"
  if [ ! -f "$file" ]; then
    python3 - "$file" "$millions" <<'PY'
import struct, sys
count = int(sys.argv[2]) * 1000000
fmt = b"fmt " + struct.pack("<IHHIIHH", 16, 1, 2, 44100, 176400, 4, 16)
data = b"data" + struct.pack("<I", 4) + bytes(4)
with open(sys.argv[1], "wb") as out:
    out.write(b"RIFF" + struct.pack("<I", 4 + 8 * count + len(fmt) + len(data)) + b"WAVE")
    block = b"junk" + bytes(4)
    for _ in range(count // 100000):
        out.write(block * 100000)
    out.write(fmt + data)
PY
  fi
  cat "$file" >/dev/null
  printf '%s: %s chunks, %s bytes\n' "$file" "$((millions * 1000000 + 2))" "$(stat -c %s "$file")"
  measure "sondara-check" "$checker" "$file"
  check=$seconds
  measure "mediainfo" mediainfo "$file"
  other=$seconds
  measure "sondara-check --chunks" "$checker" --chunks "$file"
  rm -f "$out/junk-copy.wav"
  measure "sondara-check --tidy" "$checker" --tidy "$out/junk-copy.wav" "$file"
  rm -f "$out/junk-copy.wav"
  # Linear time gives the same figure per million chunks for each file.
  python3 -c "import sys; c, o, m = map(float, sys.argv[1:])
print(f'  check against mediainfo: {c / o:.2f} of its time; {c / m:.3f} s per million chunks')" "$check" "$other" "$millions"
done
