#!/usr/bin/env bash
# Installs what is missing, then configures, builds and tests every preset:
# native and native-asan with ctest, native-tsan with the worker's tests
# under ThreadSanitizer, the Python package's wheel in a new venv with
# pytest, windows with ctest under Wine and a
# comparison of its reports with the native ones, windows32 compiled only
# (no 32-bit Wine can run it), and fuzz with a short run of every target,
# those two beside the Wine tests; then the download files of ./release.sh,
# unpacked and tried.
# Every preset is tried even after a failure; the script exits non-zero when
# any step failed, and ends with each ctest summary and the total.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
export DEBIAN_FRONTEND=noninteractive
exec </dev/null

jobs="${SONDARA_JOBS:-$(nproc)}"
failures=()
summaries=()
timings=()
reasons=()
passed_total=0
failed_total=0

# step LABEL COMMAND...: runs one step and notes its time and outcome.
step()
{
    local label="$1" start=$SECONDS status=0
    shift
    echo
    echo "== $label: $*"
    "$@" || status=$?
    timings+=("$(printf '%-28s %4ds%s' "$label" $((SECONDS - start)) "$( ((status == 0)) || echo "  FAILED ($status)")")")
    if ((status != 0)); then
        failures+=("$label")
    fi
    return "$status"
}

# Runs ctest for a preset, keeps its output beside the build, and adds its
# summary line to the totals. A run without that line counts as failed.
run_ctest()
{
    local preset="$1" log="build/$1/ctest.log" status=0 summary
    ctest --preset "$preset" -j "$jobs" 2>&1 | tee "$log" || status=$?
    summary="$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1 || true)"
    if [[ -z $summary ]]; then
        summaries+=("$preset: no ctest summary")
        return 1
    fi
    summaries+=("$preset: $summary")
    if [[ $summary =~ ([0-9]+)\ tests?\ failed\ out\ of\ ([0-9]+) ]]; then
        failed_total=$((failed_total + BASH_REMATCH[1]))
        passed_total=$((passed_total + BASH_REMATCH[2] - BASH_REMATCH[1]))
    fi
    return "$status"
}

# The test executables of the native build and how many tests ctest found
# in each.
native_tests_per_executable()
{
    ctest --test-dir build/native -N -V 2>/dev/null | awk '
        / Test command: / {
            for (i = 1; i <= NF; ++i) if ($i == "command:") break
            exe = $(i + 1)
            gsub(/"/, "", exe)
            sub(/.*\//, "", exe)
            count[exe]++
        }
        END { for (exe in count) print exe, count[exe] }' | sort
}

# Under Wine an exit code alone proves little: a program that did not run
# can still end with 0. So every test executable that the native build runs
# and the Windows build has must have left the report of the tests it ran
# under Wine, this run, with at least one test in it.
check_wine_ran()
{
    local exe native_count report ran status=0
    while read -r exe native_count; do
        [[ -n $(find build/windows -name "$exe.exe" -print -quit) ]] || continue
        report="$(find build/windows/tests -name "$exe.xml" -print -quit)"
        ran=0
        [[ -n $report ]] && ran="$(grep -c '<testcase .*status="run"' "$report" || true)"
        echo "$exe: $native_count tests natively, $ran ran under Wine"
        if ((ran == 0)); then
            echo "test.sh: no test of $exe.exe ran under Wine" >&2
            status=1
        fi
    done < <(native_tests_per_executable)
    return "$status"
}

wine_tests()
{
    # shellcheck source=scripts/wine-env.sh
    source scripts/wine-env.sh
    trap sondara_wine_end EXIT
    local status=0 begin_log=build/windows/wine-begin.log
    # What begin says is shown again at the end: CI keeps only the end of
    # the output.
    sondara_wine_begin 2>"$begin_log" || status=$?
    cat "$begin_log" >&2
    if ((status != 0)); then
        reasons+=("windows test (Wine): the Wine session did not begin:" "$(sed 's/^/    /' "$begin_log")")
        return 1
    fi
    find build/windows/tests -name '*_tests.xml' -delete
    run_ctest windows || status=$?
    check_wine_ran || status=1
    # Both builds must give the same bytes for the same files.
    scripts/compare-builds.sh build/native build/windows || status=1
    sondara_wine_end
    trap - EXIT
    return "$status"
}

# The end-to-end scenarios of the real Sondara.exe, driven with X input in a
# Wine session of their own; their summary line joins the ctest summaries.
e2e_tests()
{
    local log=build/e2e/e2e.log status=0 summary
    mkdir -p build/e2e
    tests/e2e/run.sh 2>&1 | tee "$log" || status=$?
    summary="$(grep -E '^[0-9]+ scenarios: ' "$log" | tail -n 1 || true)"
    summaries+=("windows end to end: ${summary:-no summary}")
    return "$status"
}

step "install packages" scripts/install-deps.sh || exit 1
# Every start that Wine gave up and wine-start.sh made again, this run.
mkdir -p build
rm -f build/wine-retries.log
step "compare-builds self-test" scripts/compare-builds.sh --self-test || true

# configure_and_build PRESET: the first two steps of every preset.
configure_and_build()
{
    step "$1 configure" cmake --preset "$1" && step "$1 build" cmake --build --preset "$1" -j "$jobs"
}

# The i686 build and the fuzzing need nothing of the Windows tests, which
# spend most of their time waiting on Wine and the X server: they run beside
# them at the lowest priority, in a subshell that leaves its timings and
# failures in a file for this shell to take in.
beside_wine()
{
    renice -n 19 "$BASHPID" >/dev/null || true
    timings=()
    failures=()
    configure_and_build windows32 || true
    if configure_and_build fuzz; then
        step "fuzz smoke runs" scripts/fuzz-smoke.sh 10 || true
    fi
    declare -p timings failures >build/beside-wine.state
}

for preset in native native-asan native-tsan; do
    if configure_and_build "$preset"; then
        step "$preset test" run_ctest "$preset" || true
    fi
done
# The Python package's wheel, in a new venv, against the native checker.
step "python package" tests/python/run.sh build/native/sondara-check build/python-tests \
    build/native/tests/check/libfault-shim.so || true

rm -f build/beside-wine.state
if configure_and_build windows; then
    beside_wine >build/beside-wine.log 2>&1 &
    beside=$!
    step "windows test (Wine)" wine_tests || true
    step "windows end to end (Wine)" e2e_tests || true
else
    beside_wine >build/beside-wine.log 2>&1 &
    beside=$!
fi
wait "$beside" || true
echo
echo "== beside the Wine tests: the i686 build and the fuzzing"
cat build/beside-wine.log
if [[ -f build/beside-wine.state ]]; then
    main_timings=("${timings[@]}")
    main_failures=("${failures[@]}")
    # shellcheck source=/dev/null
    source build/beside-wine.state
    timings=("${main_timings[@]}" "${timings[@]}")
    failures=("${main_failures[@]}" "${failures[@]}")
else
    failures+=("beside the Wine tests")
fi

# The download files, made from the builds above, and tried where nothing
# of the build is.
if step "release" ./release.sh; then
    step "release proof (Wine)" scripts/release-proof.sh || true
fi

echo
echo "== timings"
printf '%s\n' "${timings[@]}"
echo
echo "== ctest summaries"
printf '%s\n' "${summaries[@]}"
if ((${#failures[@]} > 0)); then
    echo "failed steps: ${failures[*]}"
fi
if ((${#reasons[@]} > 0)); then
    printf '%s\n' "${reasons[@]}"
fi
echo "tests: $passed_total passed, $failed_total failed"
echo "Wine starts made again: $(cat build/wine-retries.log 2>/dev/null | wc -l)"
((${#failures[@]} == 0))
