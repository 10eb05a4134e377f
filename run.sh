#!/usr/bin/env bash
# Installs what is missing, builds the native preset and runs the command-line
# checker: on the files given, or else on every sample under samples/. Then
# builds Sondara.exe (windows preset) and opens its window under Wine.
#
# With a display of the user's (DISPLAY set and answering), the window stays
# until the user closes it. Without one, the window opens on a virtual
# display and is driven as a user would: the path of the first file checked
# is typed in, the check started, and the window with its report is
# photographed into build/run/sondara-window.png (the path is printed); then
# its close box has to end the program with exit code 2.
#
# Exit status: 0 when both steps ran as they should; a report with findings
# is a result, not a failure of the run.
set -euo pipefail

# Files named on the command line are taken from where the caller stands.
files=()
for file in "$@"; do
    files+=("$(realpath -m -- "$file")")
done

cd "$(dirname "${BASH_SOURCE[0]}")"
export DEBIAN_FRONTEND=noninteractive
jobs="${SONDARA_JOBS:-$(nproc)}"

scripts/install-deps.sh </dev/null
cmake --preset native </dev/null
cmake --build --preset native -j "$jobs" </dev/null

checker=build/native/sondara-check
if [[ ! -x $checker ]]; then
    echo "run.sh: $checker was not built" >&2
    exit 1
fi

if ((${#files[@]} == 0)); then
    shopt -s nullglob
    files=(samples/*.wav)
    shopt -u nullglob
    if ((${#files[@]} == 0)); then
        echo "run.sh: no samples/*.wav to check" >&2
        exit 1
    fi
fi

check_status=0
"$checker" "${files[@]}" </dev/null || check_status=$?

# The window. The user's display counts only when it answers; wine-env
# starts a virtual one otherwise.
echo
echo "== Sondara.exe under Wine"
cmake --preset windows </dev/null >/dev/null
cmake --build --preset windows --target Sondara window-probe -j "$jobs" </dev/null
program="$PWD/build/windows/Sondara.exe"

# shellcheck source=scripts/wine-env.sh
source scripts/wine-env.sh
user_display=""
if [[ -n ${DISPLAY:-} ]] && timeout 5 xdotool getdisplaygeometry >/dev/null 2>&1; then
    user_display="$DISPLAY"
fi
sondara_wine_begin </dev/null
trap sondara_wine_end EXIT

if [[ -n $user_display ]]; then
    echo "run.sh: Sondara is open on $user_display; close its window to finish."
    window_status=0
    LC_ALL=ja_JP.UTF-8 scripts/wine-start.sh "$program" </dev/null || window_status=$?
    echo "run.sh: Sondara ended with exit code $window_status (2 is a normal close)"
    if ((window_status != 2)); then
        exit 1
    fi
    # A report with findings is a result, not a failure of the run.
    ((check_status <= 1)) || exit 1
    exit 0
fi

mkdir -p build/run
screenshot=build/run/sondara-window.png
rm -f "$screenshot"
sondara_wine_japanese_locale </dev/null
# The window at work, driven with real X input by the end-to-end tests'
# helpers: the first file checked above typed into the path field, the start
# button pressed, the report waited for, the window photographed, and then
# the close box, which has to end the program with exit code 2.
show_status=0
python3 -B tests/e2e/show.py --build build/windows --out build/run --screenshot "$screenshot" \
    "$(realpath -m -- "${files[0]}")" </dev/null || show_status=$?
if ((show_status != 0)) || [[ ! -f $screenshot ]]; then
    echo "run.sh: the window did not show the check as it should (see build/run/program.log)" >&2
    exit 1
fi
echo "run.sh: screenshot of the window with its report: $screenshot"
# The checker says 1 when a report has a finding and 2 when it was misused.
((check_status <= 1))
