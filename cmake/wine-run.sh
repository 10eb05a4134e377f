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
exec "$(dirname "${BASH_SOURCE[0]}")/../scripts/wine-start.sh" "$@"
