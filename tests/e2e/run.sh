#!/usr/bin/env bash
# End-to-end tests of the real Sondara.exe under Wine, driven with real X
# input: the scenarios of scenarios.py, one line each in the summary.
#
#   tests/e2e/run.sh [SCENARIO...]
#
# Joins the Wine session of the calling script, or begins one of its own.
# Takes the programs from build/windows (SONDARA_E2E_BUILD to change that)
# and leaves the pictures of every step, the files it made and the
# program's log in build/e2e. Exit status 0 when every scenario passed.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="${SONDARA_E2E_BUILD:-$root/build/windows}"
out="$root/build/e2e"

for tool in python3 xdotool xclip import; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "e2e: $tool is missing (scripts/install-deps.sh installs it)" >&2
        exit 1
    fi
done

# shellcheck source=scripts/wine-env.sh
source "$root/scripts/wine-env.sh"
if [[ ${SONDARA_WINE_SESSION:-} != 1 ]]; then
    sondara_wine_begin </dev/null
    trap sondara_wine_end EXIT
fi
sondara_wine_japanese_locale

mkdir -p "$out"
python3 -B "$root/tests/e2e/scenarios.py" --build "$build" --out "$out" "$@" </dev/null
