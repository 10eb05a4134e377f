#!/usr/bin/env bash
# Runs a Windows program of the build under 64-bit Wine: the emulator of the
# x86_64 toolchain, so ctest and test discovery run the .exe files as they
# are. Inside test.sh (or any script that called sondara_wine_begin) it joins
# that script's Wine session; run on its own, as by a plain
# `ctest --preset windows`, it prepares a session under build/wine that the
# following runs share.
set -euo pipefail

# shellcheck source=scripts/wine-env.sh
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/wine-env.sh"

if (($# == 0)); then
    echo "usage: wine-run.sh PROGRAM.exe [ARGUMENT...]" >&2
    exit 2
fi

sondara_wine_refuse_i686 "$1"
sondara_wine_attach
# Wine now and then fails at its own start with "Inconsistency detected by
# ld.so" and status 127, before the program runs; no program of ours ends
# with 127, so such a run is tried again, three times in all.
for attempt in 1 2 3; do
    status=0
    wine "$@" || status=$?
    ((status == 127)) || exit "$status"
    echo "wine-run.sh: wine ended with status 127 (attempt $attempt of 3)" >&2
done
exit 127
