#!/usr/bin/env bash
# Checks the same files with the native sondara-check and with the Windows
# one under Wine, and fails unless both print the very same JSON. The files
# are the samples, the fuzzing corpora in the tree, and every file that the
# native wave and app tests write.
# Usage: tests/compare-builds.sh NATIVE-BUILD-DIR WINDOWS-BUILD-DIR
set -euo pipefail
cd "$(dirname "$0")/.."
native="$1/sondara-check"
windows="$2/sondara-check.exe"
work=build/compare
rm -rf "$work"
mkdir -p "$work/files"

SONDARA_COLLECT_TEST_FILES="$PWD/$work/files" "$1/tests/wave/wave_tests" >/dev/null
SONDARA_COLLECT_TEST_FILES="$PWD/$work/files" "$1/tests/app/app_tests" --gtest_filter=-*Gigabytes* >/dev/null

# Relative paths, so that both builds print the same path strings.
mapfile -t files < <( (ls samples/*.wav fuzz/seeds/wave/* fuzz/regressions/wave/*; ls -d "$work"/files/*) | sort)
: > "$work/native.json"
: > "$work/windows.json"
for ((i = 0; i < ${#files[@]}; i += 100)); do
  batch=("${files[@]:i:100}")
  "$native" --json "${batch[@]}" >> "$work/native.json" || true
  cmake/wine-run.sh "$windows" --json "${batch[@]}" >> "$work/windows.json" || true
done
if ! cmp -s "$work/native.json" "$work/windows.json"; then
  echo "compare-builds: the Windows build's reports differ from the native ones:" >&2
  diff "$work/native.json" "$work/windows.json" | head -40 >&2
  exit 1
fi
echo "compare-builds: ${#files[@]} files, the same JSON from both builds ($(wc -c < "$work/native.json") bytes)"
