#!/usr/bin/env bash
# Makes three large files and checks each with sondara-check, printing wall
# time and peak memory, beside sndfile-info and mediainfo where installed:
#   - a sparse 4 GiB WAV that is sound,
#   - 1 GiB of text, which is not RIFF,
#   - a RIFF file of 100,000 chunks of two bytes,
#   - 1 GiB of zeros named .wav, not RIFF either, checked three times
#     beside cat of the same file, which reads it the way the check does,
# and the hostile files of one LIST chunk of size 3 and of an INFO entry
# that claims 0xFFFFFFF0 bytes.
# Usage: bench/run.sh [folder for the files]   (default: bench/out)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

sound="$out/sparse-4gib.wav"
text="$out/text-1gib.bin"
many="$out/many-chunks.wav"
zeros="$out/zeros-1gib.wav"

if [ ! -f "$sound" ]; then
  # RIFF size 4 GiB - 8, a PCM format, data filling the rest; the body is a hole.
  perl -e 'print "RIFF", pack("V", 0xFFFFFFF8), "WAVE", "fmt ", pack("VvvVVvv", 16, 1, 2, 44100, 176400, 4, 16),
           "data", pack("V", 0xFFFFFFD4)' > "$sound"
  truncate -s 4G "$sound"
fi
if [ ! -f "$text" ]; then
  # Not a pipe: yes ends by SIGPIPE, which pipefail would take for a failure.
  head -c 1G < <(yes "this is a line of text and no RIFF file at all.") > "$text"
fi
if [ ! -f "$zeros" ]; then
  # Written out, not a hole: the check and cat read the same cached pages.
  head -c 1G /dev/zero > "$zeros"
fi
if [ ! -f "$many" ]; then
  perl -e 'my $n = 100000; my $children = "fmt " . pack("VvvVVvv", 16, 1, 2, 44100, 176400, 4, 16)
           . ("tiny" . pack("V", 2) . "ab") x $n . "data" . pack("V", 4) . "abcd";
           print "RIFF", pack("V", length($children) + 4), "WAVE", $children' > "$many"
fi

for file in "$sound" "$text" "$many" fuzz/regressions/wave/list-size-3 fuzz/regressions/wave/info-length-fffffff0; do
  printf '%s (%s bytes)\n' "$file" "$(stat -c %s "$file")"
  # The first read brings the file into the cache, so that every tool meets it warm.
  cat "$file" >/dev/null
  measure sondara-check "$checker" "$file"
  command -v sndfile-info >/dev/null && measure sndfile-info sndfile-info "$file"
  command -v mediainfo >/dev/null && measure mediainfo mediainfo "$file"
  printf '  report: %s\n' "$("$checker" "$file" | tr '\n' ' ')"
done

# The check of a file that is not RIFF reads it once, in blocks, and should
# cost little more than cat: each round times both on the warm file.
printf '%s (%s bytes), beside cat\n' "$zeros" "$(stat -c %s "$zeros")"
cat "$zeros" >/dev/null
for round in 1 2 3; do
  measure "sondara-check, run $round" "$checker" "$zeros"
  measure "cat, run $round" cat "$zeros"
done
