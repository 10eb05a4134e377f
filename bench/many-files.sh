#!/usr/bin/env bash
# Peak memory of sondara-check --jsonl over folder trees of 10,000, 100,000
# and 1,000,000 files, in folders of 1,000 as deliveries are kept. The
# checker walks a tree as it checks it, holding only the folders on its
# way down, so its peak should stay flat from the smallest tree to the
# largest: it follows the largest folder, never the number of files. The
# files are hard links to copies of the samples made beside the trees (a
# fresh copy for each 50,000 files, below the file system's limit of links
# to one file, and never across file systems); each tree is made under the
# bench's folder and removed after.
# Usage: bench/many-files.sh [folder for the files]   (default: bench/out)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

tree="$out/many-files"
copies="$out/many-files-samples"
trap 'rm -rf "$tree" "$copies"' EXIT

for count in 10000 100000 1000000; do
  rm -rf "$tree" "$copies"
  python3 - "$tree" "$count" "$copies" samples/*.wav <<'PY'
import os, shutil, sys
root, count, copies, samples = sys.argv[1], int(sys.argv[2]), sys.argv[3], sys.argv[4:]
for n in range(count):
    if n % 50000 == 0:
        block = os.path.join(copies, str(n // 50000))
        os.makedirs(block)
        sources = [shutil.copy(sample, block) for sample in samples]
    folder = os.path.join(root, f"take-{n // 1000:04}")
    if n % 1000 == 0:
        os.makedirs(folder)
    os.link(sources[n % len(sources)], os.path.join(folder, f"{n:07}.wav"))
PY
  printf '%s files in %s folders\n' "$count" "$((count / 1000))"
  measure "sondara-check --jsonl" "$checker" --jsonl "$tree"
done
