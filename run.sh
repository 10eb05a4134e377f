#!/usr/bin/env bash
# Installs what is missing, builds the native preset and runs the command-line
# checker: on the files given, or else on every sample under samples/. Then
# builds Sondara.exe (windows preset) and opens its window under Wine.
#
# With a display of the user's (DISPLAY set and answering), the window stays
# until the user closes it. Without one, the window opens on a virtual
# display, is photographed into build/run/sondara-window.png (the path is
# printed), and is closed by its close box, which has to end the program
# with exit code 2.
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
cmake --build --preset windows --target Sondara -j "$jobs" </dev/null
program="$PWD/build/windows/Sondara.exe"

# True while process $1 runs; a child that has ended but was not yet waited
# for does not count.
running()
{
    [[ -r /proc/$1/status ]] && ! grep -q '^State:[[:space:]]*Z' "/proc/$1/status" 2>/dev/null
}

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
    LC_ALL=ja_JP.UTF-8 wine "$program" </dev/null || window_status=$?
    echo "run.sh: Sondara ended with exit code $window_status (2 is a normal close)"
    if ((window_status != 2)); then
        exit 1
    fi
    exit "$check_status"
fi

mkdir -p build/run
screenshot=build/run/sondara-window.png
rm -f "$screenshot"
# The layout is written in the Japanese code page, which a Japanese locale
# gives the program.
LC_ALL=ja_JP.UTF-8 wine "$program" </dev/null >build/run/sondara.log 2>&1 &
pid=$!

# The window appears within a second or so once the server is warm.
window=""
for ((tries = 0; tries < 300; ++tries)); do
    window="$(xdotool search --onlyvisible --name '^Sondara$' 2>/dev/null | head -n 1 || true)"
    [[ -n $window ]] && break
    running "$pid" || break
    sleep 0.1
done
if [[ -z $window ]]; then
    echo "run.sh: the Sondara window did not appear (see build/run/sondara.log)" >&2
    kill "$pid" 2>/dev/null || true
    exit 1
fi

# Give it a moment to paint, then photograph just this window.
sleep 1
eval "$(xdotool getwindowgeometry --shell "$window")"
import -window "$window" "$screenshot"
echo "run.sh: Sondara window ${WIDTH}x${HEIGHT} at ${X},${Y}; screenshot: $screenshot"

# Close it as a user would: a click on the close box at the right end of the
# caption that Wine draws. Esc is the second way; killing is the last.
xdotool mousemove --window "$window" $((WIDTH - 10)) 10 click 1
ended()
{
    local tries
    for ((tries = 0; tries < 50; ++tries)); do
        running "$pid" || return 0
        sleep 0.1
    done
    return 1
}
how="close box"
if ! ended; then
    how="Esc"
    xdotool windowfocus --sync "$window" 2>/dev/null || true
    xdotool key --window "$window" Escape
fi
if ! ended; then
    how="killed"
    xdotool windowkill "$window" 2>/dev/null || kill "$pid" 2>/dev/null || true
fi
window_status=0
wait "$pid" || window_status=$?
echo "run.sh: Sondara closed by $how, exit code $window_status (2 is a normal close)"
if ((window_status != 2)); then
    exit 1
fi
# The checker says 1 when a report has a finding and 2 when it was misused.
((check_status <= 1))
