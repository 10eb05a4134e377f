#!/usr/bin/env bash
# Times --md5 on a 1 GiB 16-bit stereo WAV file, in one run: beside
# `dd iflag=direct bs=4M` (the speed of the disk itself: --md5 at least 90%
# of it wanted, --levels --md5 at least 80%) and beside md5sum of the same
# file, from a cold page cache and from a warm one (the hash's own speed,
# with no disk). dd and the checker take turns three times and the best
# time of each counts, and --levels alone shows what the hash adds to the
# meters. The hash must be md5sum's of the audio's bytes.
# Usage: bench/md5.sh [folder for the file]   (default: bench/out; it must
# not be tmpfs, which refuses unbuffered reads)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

file="$out/md5-1gib.wav"
if [ ! -f "$file" ]; then
  # A 44-byte header, then one random MiB over and over: 1 GiB in all.
  head -c 1048576 /dev/urandom >"$out/md5-block.bin"
  {
    python3 -c 'import struct, sys
sys.stdout.buffer.write(b"RIFF" + struct.pack("<I", (1 << 30) - 8) + b"WAVEfmt " +
                        struct.pack("<IHHIIHH", 16, 1, 2, 44100, 176400, 4, 16) + b"data" + struct.pack("<I", (1 << 30) - 44))'
    for _ in $(seq 1023); do cat "$out/md5-block.bin"; done
    head -c $((1048576 - 44)) "$out/md5-block.bin"
  } >"$file"
  rm "$out/md5-block.bin"
fi

# Drops the file's pages from the page cache.
evict() { dd if="$1" iflag=nocache count=0 status=none; }
stats="$out/md5-time.txt"
timed() { # variable, output file, command...
  local variable="$1" output="$2" peak
  shift 2
  /usr/bin/time -o "$stats" -f "%e %M" "$@" >"$output" 2>&1 || true
  read -r seconds peak < <(tail -n 1 "$stats")
  printf '  %-26s %7s s %9s KiB peak\n' "$variable" "$seconds" "$peak"
  if [ -z "${!variable:-}" ] || awk -v a="$seconds" -v b="${!variable}" 'BEGIN { exit !(a < b) }'; then
    eval "$variable=$seconds"
  fi
}

printf '%s (%s bytes)\n' "$file" "$(stat -c %s "$file")"
evict "$file"
timed md5sum_cold "$out/md5-md5sum.txt" md5sum "$file"
timed md5sum_warm "$out/md5-md5sum.txt" md5sum "$file"
tail -c +45 "$file" | md5sum | cut -d ' ' -f 1 >"$out/md5-expected.txt"
evict "$file"
for turn in 1 2 3; do
  timed dd_direct "$out/md5-dd.txt" dd if="$file" of=/dev/null bs=4M iflag=direct
  timed md5 "$out/md5-only.txt" "$checker" --md5 "$file"
  timed levels_md5 "$out/md5-levels.txt" "$checker" --levels --md5 "$file"
  timed levels "$out/md5-levels-alone.txt" "$checker" --levels "$file"
done
expected="$(cat "$out/md5-expected.txt")"
grep -q "md5: computed $expected, none stored" "$out/md5-only.txt" ||
  { echo "--md5 printed: $(cat "$out/md5-only.txt"), not $expected"; exit 1; }
grep -q "md5: computed $expected, none stored" "$out/md5-levels.txt" ||
  { echo "--levels --md5 printed another hash than $expected"; exit 1; }
echo "  the hash is md5sum's of the audio: $expected"
python3 - "$dd_direct" "$md5" "$levels_md5" "$md5sum_cold" "$md5sum_warm" "$levels" <<'PY'
import sys
dd, md5, levels, cold, warm, alone = map(float, sys.argv[1:])
mib = 1024
print(f"  best of three: dd direct {dd} s ({mib / dd:.0f} MiB/s), --md5 {md5} s, --levels --md5 {levels} s")
print(f"  --md5 at {dd / md5:.0%} of dd direct (90% wanted); --levels --md5 at {dd / levels:.0%} (80% wanted)")
print(f"  --levels alone {alone} s: the MD5 beside the meters adds {levels - alone:+.2f} s")
print(f"  md5sum: {cold} s cold, {warm} s from the page cache: the hash alone at {mib / warm:.0f} MiB/s")
if warm > dd:
    print(f"  the hash is slower than the disk here ({mib / warm:.0f} against {mib / dd:.0f} MiB/s): "
          f"--md5 can't pass {dd / warm:.0%} of dd")
PY
