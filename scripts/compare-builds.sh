#!/usr/bin/env bash
# Checks the same files with the native sondara-check and with the Windows
# one under Wine, and fails unless both print the very same JSON: the
# reports, the chunk lists (--chunks), the metadata (--info, under a Japanese
# and an English code page), the levels (--levels), the loudness
# (--loudness), the MD5 of the audio (--md5: libcrypto's beside BCrypt's)
# and the verdicts of two shipped policies (--policy). The files are the
# samples, the fuzzing corpora in the tree, and every file that the native
# build's tests write.
#
# Each run of either build must also stand on its own: exit 0 when no report
# has a finding, 1 when one has (anything else, a crash included, is a
# failure, and so is 2, which would mean this script misused the checker),
# and print one JSON entry for each file it was given. Otherwise two builds
# that both crashed, or both dropped a file, would agree.
#
# Usage: scripts/compare-builds.sh NATIVE-BUILD-DIR WINDOWS-BUILD-DIR
#        scripts/compare-builds.sh --self-test
#   (the self-test runs the comparison on stand-ins for the two checkers, and
#   fails unless a crash, a lost entry or a different report is caught)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# check_run LABEL OPTION STATUS OUTPUT FILE...: fails, saying why, unless
# one run that checked FILE... into OUTPUT ended well. A chunk list or
# levels (OPTION not empty) have no findings to count.
check_run()
{
    local label="$1" option="$2" status="$3" output="$4" entries findings
    shift 4
    entries="$( { grep -o '{"path": ' "$output" || true; } | wc -l)"
    findings="$( { grep -o '"hasError": true' "$output" || true; } | wc -l)"
    if ((status != 0 && status != 1)); then
        echo "compare-builds: the $label build exited with $status on $# files (from $1 on)" >&2
        return 1
    fi
    if ((entries != $#)); then
        echo "compare-builds: the $label build printed $entries entries for $# files (from $1 on)" >&2
        return 1
    fi
    if [[ -z $option ]] && (((status == 1) != (findings > 0))); then
        echo "compare-builds: the $label build exited with $status beside $findings reports with findings (from $1 on)" >&2
        return 1
    fi
}

# compare WORK OPTION FILE...: runs both checkers (the commands in
# native_run and windows_run) with OPTION (none when empty; its words are
# arguments of their own) on the files,
# 100 at a time, and fails unless every run ended well and both wrote the
# same bytes.
compare()
{
    local work="$1" option="$2" i status batch_status=0
    shift 2
    local files=("$@") batch options=() tag="${option// /-}"
    [[ -n $option ]] && read -r -a options <<<"$option"
    : >"$work/native$tag.json"
    : >"$work/windows$tag.json"
    for ((i = 0; i < ${#files[@]}; i += 100)); do
        batch=("${files[@]:i:100}")
        status=0
        "${native_run[@]}" --json "${options[@]}" -- "${batch[@]}" >"$work/batch.json" || status=$?
        check_run native "$option" "$status" "$work/batch.json" "${batch[@]}" || batch_status=1
        cat "$work/batch.json" >>"$work/native$tag.json"
        status=0
        "${windows_run[@]}" --json "${options[@]}" -- "${batch[@]}" >"$work/batch.json" || status=$?
        check_run Windows "$option" "$status" "$work/batch.json" "${batch[@]}" || batch_status=1
        cat "$work/batch.json" >>"$work/windows$tag.json"
    done
    rm -f "$work/batch.json"
    if ((batch_status != 0)); then
        return 1
    fi
    if ! cmp -s "$work/native$tag.json" "$work/windows$tag.json"; then
        echo "compare-builds: the Windows build's output${option:+ of $option} differs from the native one:" >&2
        diff "$work/native$tag.json" "$work/windows$tag.json" | head -40 >&2
        return 1
    fi
}

self_test()
{
    local native windows expected status failed=0 kind i files=()
    self_test_work="$(mktemp -d)"
    trap 'rm -rf "$self_test_work"' EXIT
    local work="$self_test_work"
    # A stand-in for sondara-check --json: every file is sound but those
    # named bad, and each name of the stand-in is one way of going wrong.
    cat >"$work/checker" <<'EOF'
#!/usr/bin/env bash
kind="${0##*/}"
[[ $1 == --json ]] && shift
[[ $1 == -- ]] && shift
[[ $kind == usage ]] && exit 2
[[ $kind == drop ]] && set -- "${@:1:$#-1}"
finding=false separator=""
printf '['
for ((i = 1; i <= $#; ++i)); do
    error=false
    [[ ${!i} == *bad* ]] && error=true && finding=true
    report=ok
    [[ $kind == differ && $i == 1 ]] && report="not ok"
    printf '%s\n  {"path": "%s", "report": "%s", "hasError": %s}' "$separator" "${!i}" "$report" "$error"
    separator=,
done
printf '\n]\n'
[[ $kind == crash ]] && kill -SEGV $$
[[ $kind == lose-status ]] && exit 0
[[ $finding == true ]] && exit 1
exit 0
EOF
    chmod +x "$work/checker"
    for kind in good crash drop differ usage lose-status; do
        ln -s checker "$work/$kind"
    done
    # More than one batch, and a finding in the last.
    for ((i = 0; i < 100; ++i)); do
        files+=("files/$i.wav")
    done
    files+=(files/bad.wav)
    while read -r native windows expected; do
        native_run=("$work/$native")
        windows_run=("$work/$windows")
        status=0
        compare "$work" "" "${files[@]}" 2>"$work/messages" || status=$?
        if [[ $expected == pass && $status == 0 ]]; then
            echo "compare-builds self-test: $native against $windows passes"
        elif [[ $expected == fail && $status != 0 ]]; then
            echo "compare-builds self-test: $native against $windows fails: $(grep -m 1 '^compare-builds:' "$work/messages")"
        else
            echo "compare-builds self-test: $native against $windows should $expected but did not (exit $status)" >&2
            cat "$work/messages" >&2
            failed=1
        fi
    done <<'EOF'
good good pass
good crash fail
crash crash fail
drop good fail
drop drop fail
good differ fail
usage usage fail
lose-status lose-status fail
EOF
    return "$failed"
}

if [[ ${1:-} == --self-test ]]; then
    self_test
    exit
fi

if (($# != 2)); then
    echo "usage: scripts/compare-builds.sh NATIVE-BUILD-DIR WINDOWS-BUILD-DIR | --self-test" >&2
    exit 2
fi
native_run=("$1/sondara-check")
windows_run=(cmake/wine-run.sh "$2/sondara-check.exe")
work=build/compare
rm -rf "$work"
mkdir -p "$work/files"

# The files that the native tests write, for every test executable that
# writes some: all but the test of gigabytes and the tests of the checker
# as a process, whose files are a thousand copies of one sound file and
# recordings of many megabytes, made for what the process does with them.
collected=0
skipped='*Gigabytes*:CheckerOutput.*:MeasureTrustProgram.*:HostileRf64Program.*:PathBytesProgram.*'
for tests in tests/wave/wave_tests tests/app/app_tests tests/check/check_tests; do
    if [[ -x $1/$tests ]]; then
        SONDARA_COLLECT_TEST_FILES="$PWD/$work/files" "$1/$tests" --gtest_filter=-"$skipped" >/dev/null
        collected=$((collected + 1))
    fi
done
if ((collected == 0)); then
    echo "compare-builds: no test executable in $1 to write test files" >&2
    exit 1
fi

# Relative paths, so that both builds print the same path strings.
mapfile -t files < <( (ls samples/*.wav fuzz/seeds/wave/* fuzz/regressions/wave/*; ls -d "$work"/files/*) | sort)
# The chunk list shows INFO texts decoded in the platform's character set
# (the locale's here, the ANSI code page on Windows), so bytes that are not
# ASCII read differently by design. The fuzzing seeds are mutated bytes
# full of such texts, and some files of the tests hold such texts on
# purpose (as --info, which decodes them the same everywhere, tells); the
# chunk lists are compared on the other files, whose texts are ASCII.
not_ascii_info()
{
    "${native_run[@]}" --info --json -- "$@" | python3 -c '
import json, sys
for file in json.load(sys.stdin):
    entries = [e for c in file.get("chunks", []) if c.get("list") == "INFO" for e in c["entries"]]
    if any(e["textEncoding"] != "ASCII" for e in entries):
        print(file["path"])'
}
mapfile -t listed < <(printf '%s\n' "${files[@]}" | grep -v '^fuzz/seeds/' |
                      grep -vxF -f <(not_ascii_info "${files[@]}" || true))
# A policy that reads the audio (acx) reads every sample again, which takes
# Wine minutes over all the files; it runs on the samples and the files of
# the policy tests, made to pass and to miss its rules, and the policy of
# header facts (archive-master) on every file. Both builds find the shipped
# policies beside their program.
mapfile -t policed < <(printf '%s\n' "${files[@]}" | grep -E '^samples/|/PolicyRun\.')
status=0
for option in "" --chunks --levels --loudness --md5 "--policy archive-master" "--policy acx"; do
    case "$option" in
        --chunks) compared=("${listed[@]}") ;;
        "--policy acx") compared=("${policed[@]}") ;;
        *) compared=("${files[@]}") ;;
    esac
    if compare "$work" "$option" "${compared[@]}"; then
        echo "compare-builds: ${#compared[@]} files${option:+ with $option}, the same JSON from both builds" \
             "($(wc -c <"$work/native${option// /-}.json") bytes)"
    else
        status=1
    fi
done

# The metadata view decodes text by its own rule, never by the machine's
# code page: the Windows build under a Japanese and under an English code
# page must both print what the native build prints, for every file, the
# fuzzing seeds full of bytes that are not ASCII included.
source scripts/wine-env.sh
sondara_wine_japanese_locale
plain_windows_run=("${windows_run[@]}")
for locale in ja_JP.UTF-8 en_US.UTF-8; do
    locale_path=()
    [[ $locale == ja_JP.UTF-8 && -n $SONDARA_JAPANESE_LOCPATH ]] && locale_path=("LOCPATH=$SONDARA_JAPANESE_LOCPATH")
    windows_run=(env LC_ALL="$locale" "${locale_path[@]}" "${plain_windows_run[@]}")
    if compare "$work" --info "${files[@]}"; then
        echo "compare-builds: ${#files[@]} files with --info, the same JSON from both builds, Wine in $locale" \
             "($(wc -c <"$work/native--info.json") bytes)"
    else
        status=1
    fi
done
windows_run=("${plain_windows_run[@]}")

# compare_walk LABEL NATIVE-ARGUMENTS -- WINDOWS-ARGUMENTS: the JSON Lines of
# a run that found its files itself must be the same from both builds. Both
# read $work/list.txt as standard input.
compare_walk()
{
    local label="$1" native_status=0 windows_status=0 native_arguments=() windows_arguments=()
    shift
    while [[ $1 != -- ]]; do native_arguments+=("$1"); shift; done
    shift
    windows_arguments=("$@")
    "${native_run[@]}" --jsonl "${native_arguments[@]}" <"$work/list.txt" >"$work/walk-native.jsonl" || native_status=$?
    "${windows_run[@]}" --jsonl "${windows_arguments[@]}" <"$work/list.txt" >"$work/walk-windows.jsonl" || windows_status=$?
    if ((native_status > 1 || windows_status > 1 || native_status != windows_status)); then
        echo "compare-builds: $label: exit $native_status natively, $windows_status under Wine" >&2
        return 1
    fi
    if ! grep -q '"type": "file"' "$work/walk-native.jsonl" || ! cmp -s "$work/walk-native.jsonl" "$work/walk-windows.jsonl"; then
        echo "compare-builds: $label: the Windows build's JSON Lines differ from the native ones:" >&2
        diff "$work/walk-native.jsonl" "$work/walk-windows.jsonl" | head -20 >&2
        return 1
    fi
    echo "compare-builds: $label, the same JSON Lines from both builds ($(grep -c '"type": "file"' "$work/walk-native.jsonl") files)"
}

# Paths on standard input, one a line, with either line end.
printf '%s\r\n' samples/*.wav "$work"/files/*.wav >"$work/list.txt"
compare_walk "paths from standard input" - -- - || status=1
# Folders walked by each build; a folder written with "/" is continued with
# "/" on Windows too, so the paths are the same strings.
compare_walk "folders walked" -j 2 ./samples "./$work/files" -- -j 2 ./samples "./$work/files" || status=1
# The shell expands *.wav for the native build; the Windows build gets the
# pattern itself, as cmd hands it over, and expands it.
compare_walk "*.wav expanded" samples/*.wav -- "samples/*.wav" || status=1
exit "$status"
