#!/usr/bin/env bash
# Times the Python package on the 10,000-file folder of bench/folder.sh, in
# one run: sondara.check_many with 1 and 2 jobs against sondara-check --jsonl
# (within 1.5 times its time wanted) and against a loop of soundfile.info
# over the same files (check_many with 2 jobs at least 1.5 times faster
# wanted), each with wall time and peak memory, and what each found: the
# point of the fast path is that it also judges. The wheel is built and
# installed into a venv of its own that sees Debian's soundfile.
# Usage: bench/python.sh [folder for the files]   (default: bench/out)
set -euo pipefail
# shellcheck source=bench/prepare.sh
source "$(dirname "$0")/prepare.sh"

folder="$out/deliveries"
[ -d "$folder" ] || bench/folder.sh "$out" >/dev/null
cat "$folder"/*/*.wav >/dev/null

venv="$out/python-venv"
rm -rf "$venv" "$out/wheel"
scripts/build-wheel.sh "$out/wheel" >/dev/null
/usr/bin/python3 -m venv --system-site-packages "$venv"
"$venv/bin/python" -m pip install --no-index --no-deps --quiet "$out"/wheel/sondara-*.whl

# The same walk for every Python contender: sorted folders, sorted files.
cat >"$out/python-bench.py" <<'PY'
import os, sys
def paths(folder):
    found = []
    for root, folders, files in os.walk(folder):
        folders.sort()
        found += [os.path.join(root, name) for name in sorted(files) if name.endswith(".wav")]
    return found
mode, folder = sys.argv[1], sys.argv[2]
if mode == "soundfile":
    import soundfile
    read = refused = 0
    for path in paths(folder):
        try:
            soundfile.info(path)
            read += 1
        except Exception:
            refused += 1
    print(f"soundfile.info: {read} read, {refused} refused")
else:
    import collections, sondara
    verdicts = collections.Counter(r.verdict for r in sondara.check_many(paths(folder), jobs=int(mode)))
    print(f"check_many: {verdicts['ok']} sound, {verdicts['error']} with findings, {verdicts['warning']} with warnings")
PY

printf '%s (%s files)\n' "$folder" "$(find "$folder" -name '*.wav' | wc -l)"
measure "sondara-check --jsonl" "$checker" --jsonl "$folder"
cli="$seconds"
measure "sondara-check --jsonl -j1" "$checker" --jsonl -j 1 "$folder"
measure "check_many jobs=2" "$venv/bin/python" "$out/python-bench.py" 2 "$folder"
many2="$seconds"
measure "check_many jobs=1" "$venv/bin/python" "$out/python-bench.py" 1 "$folder"
measure "soundfile.info loop" "$venv/bin/python" "$out/python-bench.py" soundfile "$folder"
soundfile="$seconds"
python3 -c "import sys
cli, many, sf = map(float, sys.argv[1:])
print(f'  check_many jobs=2 / sondara-check --jsonl: {many / max(cli, 0.01):.2f} (at most 1.5 wanted)')
print(f'  soundfile.info loop / check_many jobs=2: {sf / max(many, 0.01):.2f} (at least 1.5 wanted)')" "$cli" "$many2" "$soundfile"
printf '  found: %s\n' "$("$venv/bin/python" "$out/python-bench.py" 2 "$folder")"
printf '  found: %s\n' "$("$venv/bin/python" "$out/python-bench.py" soundfile "$folder")"
printf '  found: %s\n' "$("$checker" --jsonl "$folder" | tail -n 1)"
