#!/usr/bin/env bash
# Runs every fuzz target of the fuzz preset for a short while on its seeds
# and its regression corpus, within the memory limits the targets must
# keep. Fails when a target finds a crash, a leak, a hang or a breach.
# First a self-test proves that those limits still stop a real blow-up: a
# tiny target built here, which keeps 1 MB per input, asks for 100 MB at
# once, or loses 1 KB per input, must be stopped each time.
# Usage: scripts/fuzz-smoke.sh [seconds per target]   (default 30)
#        scripts/fuzz-smoke.sh --self-test            (the self-test alone)
# For hours instead of seconds, see the README.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# The limits measure the program: one allocation above 64 MB is a finding,
# and so is a process above 256 MB. AddressSanitizer keeps freed blocks in a
# quarantine to catch a use after free, by default up to 256 MB of them, and
# the RSS limit counts the highest RSS the process ever had; with the
# default the limit measured the sanitizer's bookkeeping rather than the
# program (fuzz-wave was stopped above 256 MB with a live heap of 26 MB). A
# 16 MB quarantine still catches the use of a block freed while the same
# input runs. Options the caller set in ASAN_OPTIONS come after these, so
# they win.
export ASAN_OPTIONS="quarantine_size_mb=16:thread_local_quarantine_size_kb=256${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
limits=(-timeout=10 -rss_limit_mb=256 -malloc_limit_mb=64)

# When the RSS limit fires, libFuzzer prints a heap profile with every
# thread stopped; if the fuzzing thread was in a leak check just then, the
# two wait for each other for good. A run that outlives its time by this
# many seconds is therefore ended, and counts as failed.
grace=60

smoke=build/fuzz/smoke

# run_fuzzer SECONDS LOG PROGRAM ARGUMENT...: one run within the limits,
# ended should it hang; its exit status is the run's, 124 or 137 for a hang.
run_fuzzer()
{
    local seconds="$1" log="$2"
    shift 2
    timeout -k 5 $((seconds + grace)) "$@" -max_total_time="$seconds" "${limits[@]}" >"$log" 2>&1
}

self_test()
{
    local folder="$smoke/self-test" mode expected outcome status=0 note
    rm -rf "$folder"
    mkdir -p "$folder/corpus"
    # For each megabyte it keeps, the target frees a block made at start-up:
    # an input with more allocations than frees makes libFuzzer run a leak
    # check, which could meet the heap profile described above.
    clang++ -g -O1 -fsanitize=fuzzer,address,undefined -x c++ -o "$folder/blow-up" - <<'EOF' || return 1
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
static void* volatile sink;
static void* tokens[1024];
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    for (void*& token : tokens) token = std::malloc(1);
    return 0;
}
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t*, std::size_t) {
    const char* mode = std::getenv("SONDARA_BLOW_UP");
    if (!std::strcmp(mode, "grow")) {          // 1 MB kept per input, at most 1 GB
        static void* kept[1024]; static int count;
        if (count < 1024) {
            kept[count] = std::malloc(1 << 20); std::memset(kept[count], 1, 1 << 20);
            std::free(tokens[count++]);
        }
        usleep(5000);
    } else if (!std::strcmp(mode, "huge")) {   // one block of 100 MB
        sink = std::malloc(100 << 20); std::free(sink);
    } else {                                   // 1 KB lost per input
        sink = std::malloc(1024); sink = nullptr;
    }
    return 0;
}
EOF
    for mode in grow huge leak; do
        case "$mode" in
            grow) expected='ERROR: libFuzzer: out-of-memory (used: ' ;;
            huge) expected='ERROR: libFuzzer: out-of-memory (malloc(104857600))' ;;
            leak) expected='ERROR: LeakSanitizer: detected memory leaks' ;;
        esac
        outcome=0
        SONDARA_BLOW_UP="$mode" run_fuzzer 20 "$folder/$mode.log" "$folder/blow-up" \
            -artifact_prefix="$folder/$mode-" "$folder/corpus" || outcome=$?
        if ((outcome != 0)) && grep -qF -- "$expected" "$folder/$mode.log"; then
            note=""
            ((outcome == 124 || outcome == 137)) && note="; its report then hung and was ended"
            echo "self-test $mode: stopped: $(grep -m 1 -F -- "$expected" "$folder/$mode.log" | sed 's/^==[0-9]*== *//')$note"
        else
            echo "self-test $mode: not stopped as it should be (exit $outcome); see $folder/$mode.log" >&2
            tail -n 20 "$folder/$mode.log" >&2
            status=1
        fi
    done
    return "$status"
}

if [[ ${1:-} == --self-test ]]; then
    self_test
    exit
fi

seconds="${1:-30}"
status=0
self_test || status=1

# smoke_target TARGET: the short run of one target; says how it went, and
# leaves its exit status in $smoke/TARGET.status.
smoke_target()
{
    local target="$1" corpus="$smoke/$1" log="$smoke/$1.log" outcome=0 lengths=()
    rm -rf "$corpus" "$smoke/$target-artifacts"
    mkdir -p "$corpus" "$smoke/$target-artifacts"
    if [[ $target == wave ]]; then
        # The wave corpus holds files of tens of thousands of chunks (each
        # data chunk opens the file twice, as the reader must), and inputs
        # mutated from those took most of the run: about 600 inputs a
        # second where the other targets do 5,000 and more. They are run
        # once each at their full length first; the mutations stay within
        # 4 KiB, hundreds of chunks, which keeps the run above 2,000 a second.
        local regressions=(fuzz/regressions/wave/*)
        timeout -k 5 $((seconds + grace)) build/fuzz/fuzz/fuzz-wave "${limits[@]}" "${regressions[@]}" \
            >"$smoke/wave-regressions.log" 2>&1 || outcome=$?
        lengths=(-max_len=4096)
    fi
    ((outcome == 0)) && run_fuzzer "$seconds" "$log" build/fuzz/fuzz/fuzz-"$target" \
        -print_final_stats=1 -artifact_prefix="$smoke/$target-artifacts/" "${lengths[@]}" \
        "$corpus" "fuzz/seeds/$target" "fuzz/regressions/$target" || outcome=$?
    if ((outcome == 0)); then
        echo "fuzz-$target: $(grep -o 'stat::number_of_executed_units: [0-9]*' "$log" | grep -o '[0-9]*$') runs" \
             "($(grep -o 'stat::average_exec_per_sec: *[0-9]*' "$log" | grep -o '[0-9]*$') a second)," \
             "$(grep -oE 'cov: [0-9]+' "$log" | tail -n 1)," \
             "peak RSS $(grep -o 'stat::peak_rss_mb: *[0-9]*' "$log" | grep -o '[0-9]*$') MB, no finding"
    else
        if ((outcome == 124 || outcome == 137)); then
            echo "fuzz-$target: still running $grace s after its time, ended"
        fi
        echo "fuzz-$target: a finding; see $log and $smoke/$target-artifacts/"
        tail -n 30 "$log"
    fi
    echo "$outcome" >"$smoke/$target.status"
}

# Each run is one process on one core, so as many run at once as there are
# cores (SONDARA_JOBS to change that); what they say comes in target order.
targets=(wave layout csv attributes description writer levels policy)
parallel="${SONDARA_JOBS:-$(nproc)}"
mkdir -p "$smoke"
for target in "${targets[@]}"; do
    while (($(jobs -rp | wc -l) >= parallel)); do
        wait -n || true
    done
    rm -f "$smoke/$target.status"
    smoke_target "$target" >"$smoke/$target.summary" 2>&1 &
done
wait
for target in "${targets[@]}"; do
    if [[ $(cat "$smoke/$target.status" 2>/dev/null) == 0 ]]; then
        cat "$smoke/$target.summary"
    else
        cat "$smoke/$target.summary" >&2
        status=1
    fi
done
exit "$status"
