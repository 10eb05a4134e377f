#!/usr/bin/env bash
# Runs a Windows program of the build under 64-bit Wine. The prefix and the
# display come from the environment that test.sh prepares; the defaults let
# a developer run one test binary by hand.
export WINEPREFIX="${WINEPREFIX:-$(cd "$(dirname "$0")/.." && pwd)/build/wine-prefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
exec wine "$@"
