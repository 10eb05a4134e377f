#!/usr/bin/env bash
# Runs every fuzz target of the fuzz preset for a short while on its seeds
# and its regression corpus, within the memory limits the targets must
# keep. Fails when a target finds a crash, a leak, a hang or a breach.
# Usage: scripts/fuzz-smoke.sh [seconds per target]   (default 30)
# For hours instead of seconds, see the README.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
seconds="${1:-30}"
status=0
for target in wave layout csv attributes; do
    corpus="build/fuzz/smoke/$target"
    rm -rf "$corpus" "build/fuzz/smoke/$target-artifacts"
    mkdir -p "$corpus" "build/fuzz/smoke/$target-artifacts"
    log="build/fuzz/smoke/$target.log"
    if build/fuzz/fuzz/fuzz-"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=256 -malloc_limit_mb=64 \
        -print_final_stats=1 -artifact_prefix="build/fuzz/smoke/$target-artifacts/" \
        "$corpus" "fuzz/seeds/$target" "fuzz/regressions/$target" >"$log" 2>&1; then
        echo "fuzz-$target: $(grep -o 'stat::number_of_executed_units: [0-9]*' "$log" | grep -o '[0-9]*$') runs," \
             "$(grep -oE 'cov: [0-9]+' "$log" | tail -n 1), no finding"
    else
        echo "fuzz-$target: a finding; see $log and build/fuzz/smoke/$target-artifacts/" >&2
        tail -n 30 "$log" >&2
        status=1
    fi
done
exit "$status"
