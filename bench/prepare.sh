# shellcheck shell=bash
# What every benchmark needs first; source it from bench/<name>.sh with the
# folder for the files as $1 (default bench/out). Leaves the repository as
# the current folder, the folder in $out, and the checker to time in
# $checker (SONDARA_CHECK, else the native build's, built when missing).
cd "$(dirname "${BASH_SOURCE[0]}")/.."
out="${1:-bench/out}"
mkdir -p "$out"
# /usr/bin/time and everything the build needs.
scripts/install-deps.sh </dev/null
checker="${SONDARA_CHECK:-build/native/sondara-check}"
if [ ! -x "$checker" ]; then
  cmake --preset native >/dev/null
  cmake --build --preset native --target sondara-check >/dev/null
fi

# measure LABEL COMMAND...: runs the command with its output dropped and
# prints its wall time and peak memory; the time stays in $seconds.
measure() {
  local label="$1" peak
  shift
  /usr/bin/time -o "$out/time.txt" -f "%e %M" "$@" >/dev/null 2>&1 || true
  read -r seconds peak < <(tail -n 1 "$out/time.txt")
  printf '  %-24s %7s s %9s KiB peak\n' "$label" "$seconds" "$peak"
}
