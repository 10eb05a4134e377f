#!/usr/bin/env bash
# Times the levels of a 1 GiB 16-bit stereo WAV file: sondara-check --levels
# against `sox FILE -n stats`, each from a cold page cache, in the same run;
# then --levels and --levels --loudness beside `dd iflag=direct` (the speed
# of the disk itself: at least 90% and 75% of it wanted), peak memory (at
# most 32 MiB wanted), and --loudness beside ffmpeg's ebur128=peak=true (at
# most a tenth of its time wanted). The vector path of the loudness is the
# second line of sondara-check --version.
# sondara-check reads past the system's cache (aligned mode), so after it
# the file's pages must still be out of the cache: fincore shows them
# before and after each tool.
# Usage: bench/levels.sh [folder for the file]   (default: bench/out; it
# must not be tmpfs, which refuses unbuffered reads)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

file="$out/levels-1gib.wav"
if [ ! -f "$file" ]; then
  # A tone over noise, 1 GiB in all: one random MiB repeated, so that every
  # sample value occurs and making the file costs little.
  python3 - "$file" <<'PY'
import math, os, struct, sys
total = 1 << 30
data = total - 44
header = b"RIFF" + struct.pack("<I", total - 8) + b"WAVE" + b"fmt " + struct.pack("<IHHIIHH", 16, 1, 2, 44100, 176400, 4, 16)
header += b"data" + struct.pack("<I", data)
block = bytearray(os.urandom(1 << 20))
for i in range(0, len(block), 4):
    tone = int(8000 * math.sin(i / 4 * 2 * math.pi * 440 / 44100))
    noise, = struct.unpack_from("<h", block, i)
    struct.pack_into("<hh", block, i, tone + noise // 8, noise // 2)
with open(sys.argv[1], "wb") as out:
    out.write(header)
    left = data
    while left > 0:
        piece = min(left, len(block))
        out.write(block[:piece])
        left -= piece
PY
fi

# Writes back and drops the file's pages from the cache.
evict() {
  python3 -c 'import os, sys
fd = os.open(sys.argv[1], os.O_RDONLY); os.fsync(fd); os.posix_fadvise(fd, 0, 0, os.POSIX_FADV_DONTNEED); os.close(fd)' "$1"
}
cached() { fincore --bytes --noheadings --output RES "$1" | tr -d ' '; }

stats="$out/levels-time.txt"
measure() { # label, output file, command...
  local label="$1" output="$2"; shift 2
  /usr/bin/time -o "$stats" -f "%e %M %U %S" "$@" >"$output" 2>&1 || true
  read -r seconds peak user system < <(tail -n 1 "$stats")
  # The processor time too: on a machine others load, the wall time of a
  # tool that keeps both cores busy says more of them than of the tool.
  printf '  %-22s %7s s %9s KiB peak %6.2f s processor   cached after: %s bytes\n' "$label" "$seconds" "$peak" \
    "$(awk -v u="$user" -v s="$system" 'BEGIN { print u + s }')" "$(cached "$file")"
  eval "${label//[^a-z0-9]/_}=$seconds"
}

printf '%s (%s bytes), cached at start: %s bytes\n' "$file" "$(stat -c %s "$file")" "$(cached "$file")"
printf '%s\n' "$("$checker" --version | tr '\n' ';' | sed 's/;$//; s/;/, /')"
evict "$file"
printf '  cached after eviction: %s bytes\n' "$(cached "$file")"
measure "sondara-check cold" "$out/levels-sondara.txt" "$checker" --levels "$file"
evict "$file"
measure "sox stats cold" "$out/levels-sox.txt" sox "$file" -n stats
measure "sox stats warm" "$out/levels-sox-warm.txt" sox "$file" -n stats
measure "sondara-check again" "$out/levels-sondara-again.txt" "$checker" --levels "$file"
evict "$file"
# The disk of a shared virtual machine gives the same read from 0.25 to 1 s,
# by the host's cache: dd, --levels and --levels --loudness take turns five
# times, and the median of each counts (the best of each is said too; a
# best time of dd is often a turn of the host's cache, which the others,
# reading right after, seldom meet).
turns() { # name of the list, then the time of this turn
  eval "$1=\"\${$1:-} $2\""
}
most() { # the highest peak memory of the turns
  if [ -z "${!1:-}" ] || awk -v a="$2" -v b="${!1}" 'BEGIN { exit !(a > b) }'; then eval "$1=$2"; fi
}
for turn in 1 2 3 4 5; do
  measure "dd direct" "$out/levels-dd.txt" dd if="$file" of=/dev/null bs=4M iflag=direct
  turns dd_turns "$dd_direct"
  measure "sondara-check levels" "$out/levels-only.txt" "$checker" --levels "$file"
  turns levels_turns "$sondara_check_levels"
  most levels_peak "$peak"
  measure "sondara-check loudness" "$out/levels-loudness.txt" "$checker" --levels --loudness "$file"
  turns loudness_turns "$sondara_check_loudness"
  most loudness_peak "$peak"
done
median() { tr ' ' '\n' <<<"$1" | sed '/^$/d' | sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
least() { tr ' ' '\n' <<<"$1" | sed '/^$/d' | sort -g | head -n 1; }
dd_direct="$(median "$dd_turns")" sondara_check_levels="$(median "$levels_turns")" sondara_check_loudness="$(median "$loudness_turns")"
printf '  median of five: dd direct %s s, sondara-check levels %s s, with loudness %s s\n' \
  "$dd_direct" "$sondara_check_levels" "$sondara_check_loudness"
printf '  best of five:   dd direct %s s, sondara-check levels %s s, with loudness %s s\n' \
  "$(least "$dd_turns")" "$(least "$levels_turns")" "$(least "$loudness_turns")"
python3 -c 'import sys; d, l, o, lp, op = map(float, sys.argv[1:]); print(f"  --levels at {d / max(l, 0.01):.0%} of dd direct (90% wanted), --levels --loudness at {d / max(o, 0.01):.0%} (75% wanted), medians; peak memory {lp / 1024:.1f} and {op / 1024:.1f} MiB (32 MiB at most)")' \
  "$dd_direct" "$sondara_check_levels" "$sondara_check_loudness" "$levels_peak" "$loudness_peak"
if command -v ffmpeg >/dev/null; then
  evict "$file"
  measure "ffmpeg ebur128" "$out/levels-ffmpeg.txt" ffmpeg -nostats -i "$file" -af ebur128=peak=true -f null -
  python3 -c 'import sys; d, l, o, f = map(float, sys.argv[1:]); print(f"  --levels at {d / max(l, 0.01):.0%} of dd direct (90% wanted); --loudness in {o / max(f, 0.01):.1%} of ffmpeg'"'"'s time (10% at most)")' \
    "$dd_direct" "$sondara_check_levels" "$sondara_check_loudness" "$ffmpeg_ebur128"
  grep -E 'I:|LRA:|Peak:' "$out/levels-ffmpeg.txt" | tail -4 | sed 's/^/  ffmpeg /'
fi
echo "sondara-check --loudness:"; sed 's/^/  /' "$out/levels-loudness.txt"
echo "sondara-check:"; sed 's/^/  /' "$out/levels-sondara.txt"
echo "sox:"; grep -E 'Pk lev dB|RMS lev dB|DC offset' "$out/levels-sox.txt" | sed 's/^/  /'
if awk -v a="$sondara_check_cold" -v b="$sox_stats_cold" 'BEGIN { exit !(a <= b) }'; then
  echo "sondara-check is at least as fast as sox ($sondara_check_cold s against $sox_stats_cold s, both cold)"
else
  echo "sondara-check is slower than sox ($sondara_check_cold s against $sox_stats_cold s, both cold)"
  exit 1
fi
