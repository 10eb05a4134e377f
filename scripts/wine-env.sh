# shellcheck shell=bash
# The Wine environment that the Windows tests, the program and the benchmarks
# run in. Source this file; it defines functions and changes nothing by itself.
#
#   sondara_wine_begin   For a script that runs Windows programs (test.sh,
#                        run.sh, benchmarks): a display, the prefix with its
#                        registry settings, and a warm wineserver. Exports
#                        DISPLAY, WINEPREFIX, WINEDEBUG and SONDARA_WINE_SESSION.
#                        Pair it with sondara_wine_end, e.g. in an EXIT trap.
#   sondara_wine_end     Stops the wineserver, and the Xvfb if begin started
#                        one.
#   sondara_wine_attach  For cmake/wine-run.sh: joins the session a script
#                        began, or else prepares one that outlives the caller,
#                        so that a plain `ctest --preset windows` works too
#                        (its Xvfb ends by itself once unused; it has no
#                        keeper, so a test's first window costs a little more).
#   sondara_wine_japanese_locale
#                        For running the program as a Japanese user: makes
#                        sure a ja_JP.UTF-8 locale exists and exports
#                        SONDARA_JAPANESE_LOCPATH, the LOCPATH that finds it
#                        (empty when the system has one). Wine takes the code
#                        page of LC_ALL=ja_JP.UTF-8 even without the locale,
#                        but then maps no Japanese file name: a path with
#                        Japanese in it reads as missing.
#   sondara_wine_refuse_i686 FILE
#                        Fails for a 32-bit x86 executable: 64-bit Wine runs
#                        one as a silent success.
#
# Settings, each with a default:
#   SONDARA_WINE_HOME    build/wine: the prefix, logs and the session's state.
#   SONDARA_WINE_PREFIX  $SONDARA_WINE_HOME/prefix, exported as WINEPREFIX.
#   SONDARA_WINEDEBUG    -all, exported as WINEDEBUG.
#   DISPLAY              used when it answers; otherwise an Xvfb is started on
#                        a free display number.

sondara_wine_root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"

# The server stays this many seconds after its last program ends: long enough
# to bridge the gaps between tests, short enough not to linger.
sondara_wine_persist=10
# An Xvfb that attach starts for a plain ctest run ends this many seconds
# after its last client, which is after the wineserver session has ended.
sondara_wine_xvfb_linger=30
# The caption buttons' symbol font, from Debian's fonts-wine.
sondara_wine_marlett=/usr/share/wine/fonts/marlett.ttf

sondara_wine__defaults()
{
    SONDARA_WINE_HOME="${SONDARA_WINE_HOME:-$sondara_wine_root/build/wine}"
    export SONDARA_WINE_HOME
    # An ambient WINEPREFIX is not taken: the tests would change that prefix.
    export WINEPREFIX="${SONDARA_WINE_PREFIX:-$SONDARA_WINE_HOME/prefix}"
    export WINEDEBUG="${SONDARA_WINEDEBUG:--all}"
    mkdir -p "$SONDARA_WINE_HOME"
}

# Says why the session could not begin, with the end of the log that tells
# more when one is given: CI keeps only the end of a run's output.
sondara_wine__fail()
{
    local message="$1" log="${2:-}"
    echo "wine-env: $message" >&2
    if [[ -n $log && -s $log ]]; then
        echo "wine-env: the end of $log:" >&2
        tail -n 20 "$log" | sed 's/^/    /' >&2
    fi
    return 1
}

# True when the X display $1 accepts a client.
sondara_wine__display_usable()
{
    local display="$1"
    [[ -n $display ]] || return 1
    if command -v xdotool >/dev/null 2>&1; then
        DISPLAY="$display" timeout 5 xdotool getdisplaygeometry >/dev/null 2>&1
    else
        [[ $display =~ ^:([0-9]+)(\.[0-9]+)?$ && -S /tmp/.X11-unix/X${BASH_REMATCH[1]} ]]
    fi
}

# True while process $1 runs (a zombie that is not yet reaped does not count).
sondara_wine__alive()
{
    local stat
    stat="$(cat "/proc/$1/stat" 2>/dev/null)" || return 1
    stat="${stat##*) }"
    [[ ${stat:0:1} != Z ]]
}

# Starts Xvfb on a free display number, which the server picks itself and
# reports through -displayfd once it accepts clients: two sessions that
# start at the same moment (two test runs on one machine) can't end up on
# one server, which the first to finish would take from the other. With
# "detached" the server leaves the caller's session and ends by itself a
# while after its last client; otherwise it is the caller's child, to be
# ended by sondara_wine_end. Sets sondara_wine_xvfb_display and
# sondara_wine_xvfb_pid.
sondara_wine__start_xvfb()
{
    local mode="$1" number="" pid tries
    local log="$SONDARA_WINE_HOME/xvfb.log" numbers
    local -a command=(Xvfb) options=(-screen 0 1280x1024x24 -nolisten tcp)
    command -v Xvfb >/dev/null 2>&1 || { sondara_wine__fail "Xvfb is not installed"; return 1; }
    numbers="$(mktemp "$SONDARA_WINE_HOME/xvfb-display.XXXXXX")"
    if [[ $mode == detached ]]; then
        # setsid keeps the server out of ctest's process group; --wait keeps
        # the pid ours to watch should setsid have to fork.
        command=(setsid --wait Xvfb)
        options+=(-terminate "$sondara_wine_xvfb_linger")
    else
        options+=(-noreset)
    fi
    (
        sondara_wine__close_fds
        exec "${command[@]}" -displayfd 3 "${options[@]}" 3>"$numbers"
    ) </dev/null >"$log" 2>&1 &
    pid=$!
    for ((tries = 0; tries < 100; ++tries)); do
        number="$(tr -dc '0-9' <"$numbers")"
        [[ -n $number ]] && break
        sondara_wine__alive "$pid" || break
        sleep 0.1
    done
    rm -f "$numbers"
    if [[ -n $number ]] && sondara_wine__display_usable ":$number"; then
        sondara_wine_xvfb_display=":$number"
        sondara_wine_xvfb_pid=$pid
        return 0
    fi
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
    sondara_wine__fail "could not start Xvfb" "$log"
}

# Closes every descriptor above 2; only ever called inside a subshell. The
# Xvfb, the wineserver and the services that the first Wine program of a
# session starts live on, and would otherwise hold whatever the caller had
# open: attach's lock, or a pipe that someone waits to see closed.
sondara_wine__close_fds()
{
    local fd
    for fd in /proc/self/fd/*; do
        fd="${fd##*/}"
        if ((fd > 2)); then
            eval "exec $fd>&-" 2>/dev/null || true
        fi
    done
}

# Runs "$@" with descriptors 0 to 2 only.
sondara_wine__spawn()
{
    (
        sondara_wine__close_fds
        exec "$@"
    )
}

# Runs one Windows command of the session's set-up with its output in a
# file, never a pipe, for the same reason; a start that Wine gave up is made
# again by wine-start.sh.
sondara_wine__run_logged()
{
    local log="$1"
    shift
    sondara_wine__spawn "$sondara_wine_root/scripts/wine-start.sh" "$@" </dev/null >>"$log" 2>&1
}

# The registry values the program's windows and fonts rely on: no window
# manager is running, so Wine draws the frames (top-level windows then close
# at once), and the Japanese UI fonts fall back to Noto Sans CJK JP.
sondara_wine__settings()
{
    local fonts='HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes'
    local face
    printf '%s\t%s\t%s\t%s\n' 'HKCU\Software\Wine\X11 Driver' Managed REG_SZ N
    for face in 'MS UI Gothic' 'Meiryo UI' 'Yu Gothic UI' 'MS Gothic' 'Tahoma' 'Microsoft Sans Serif'; do
        printf '%s\t%s\t%s\t%s\n' "$fonts" "$face" REG_SZ 'Noto Sans CJK JP'
    done
    printf '%s\t%s\t%s\t%s\n' 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' \
        Tahoma REG_MULTI_SZ 'NotoSansCJK-Regular.ttc,Noto Sans CJK JP'
    # In the Japanese code page Wine rewrites the substitute of "MS Shell Dlg"
    # to "MS UI Gothic" at start-up, and substitutes don't chain: message
    # boxes then fell back to a Latin font and showed Japanese as boxes. A
    # replacement makes "MS UI Gothic" a name of Noto Sans CJK JP itself.
    printf '%s\t%s\t%s\t%s\n' 'HKCU\Software\Wine\Fonts\Replacements' 'MS UI Gothic' REG_SZ 'Noto Sans CJK JP'
    # Debian's Wine looks for the fonts it ships in the system's font folder,
    # while fonts-wine puts them in Wine's data folder; without Marlett the
    # caption buttons that Wine draws show as the letters "0 1 r". Marlett
    # alone comes in, through a font folder of the prefix's own: Wine's
    # Tahoma would stand in front of the substitute above, and Japanese text
    # would show as boxes.
    if [[ -f $sondara_wine_marlett ]]; then
        local folder="$WINEPREFIX/sondara-fonts"
        printf '%s\t%s\t%s\t%s\n' 'HKCU\Software\Wine\Fonts' Path REG_SZ "Z:${folder//\//\\}"
    fi
}

# The prefix's font folder of the settings above: Marlett and nothing else.
sondara_wine__font_folder()
{
    local folder="$WINEPREFIX/sondara-fonts"
    [[ -f $sondara_wine_marlett ]] || return 0
    mkdir -p "$folder"
    ln -sfn "$sondara_wine_marlett" "$folder/marlett.ttf"
}

# Creates the prefix when it is missing or was left half made, then writes
# the registry values when they differ from the ones last written. Expects
# DISPLAY to be set and the session's wineserver to be running.
sondara_wine__prepare_prefix()
{
    local log="$SONDARA_WINE_HOME/wine.log"
    local ready="$WINEPREFIX/.sondara-ready"
    local applied="$WINEPREFIX/.sondara-settings"
    local wanted key name type data
    if [[ ! -f $ready ]]; then
        echo "wine-env: creating the prefix $WINEPREFIX" >&2
        # Without mscoree and mshtml, wineboot does not offer to download
        # Mono and Gecko; with a display that offer is a dialog that waits.
        if ! WINEDLLOVERRIDES="mscoree,mshtml=" sondara_wine__run_logged "$log" wineboot -i; then
            sondara_wine__fail "wineboot -i failed" "$log"
            return 1
        fi
        touch "$ready"
        rm -f "$applied"
    fi
    sondara_wine__font_folder
    wanted="$(sondara_wine__settings)"
    if [[ ! -f $applied || "$(<"$applied")" != "$wanted" ]]; then
        while IFS=$'\t' read -r key name type data; do
            if ! sondara_wine__run_logged "$log" reg add "$key" /v "$name" /t "$type" /d "$data" /f; then
                sondara_wine__fail "could not set $key\\$name" "$log"
                return 1
            fi
        done <<<"$wanted"
        printf '%s\n' "$wanted" >"$applied"
    fi
}

# Starts the wineserver of the prefix with the persistence above. Succeeds
# when it started one, fails when one was running already.
sondara_wine__start_server()
{
    mkdir -p "$WINEPREFIX"
    # The number has to be attached: getopt reads "-p 10" as -p without one,
    # which keeps the server for good.
    sondara_wine__spawn wineserver "-p$sondara_wine_persist" </dev/null >>"$SONDARA_WINE_HOME/wineserver.log" 2>&1
}

# One run of a small program, so that Wine's services are up before the first
# real program, and a check that Wine runs programs at all: a broken Wine
# tends to fail quietly.
sondara_wine__warm_up()
{
    local out="$SONDARA_WINE_HOME/warm-up.out"
    rm -f "$out"
    sondara_wine__run_logged "$out" cmd.exe /c echo sondara-wine-ready || true
    if ! grep -q sondara-wine-ready "$out" 2>/dev/null; then
        sondara_wine__fail "Wine does not run programs (see also $SONDARA_WINE_HOME/wine.log)" "$out"
        return 1
    fi
}

# Keeps one program of the session on the desktop until the fifo's writer,
# held by the calling shell, closes. Without it Wine's desktop process quits
# a second after its last user, and the next program with a window starts it
# anew with that program's standard error, which ctest then waits on until
# the desktop quits again.
sondara_wine__start_keeper()
{
    local fifo="$SONDARA_WINE_HOME/keeper.fifo"
    rm -f "$fifo"
    mkfifo "$fifo" || return 1
    exec {sondara_wine_keeper_fd}<>"$fifo"
    (
        sondara_wine__close_fds
        exec wine cmd.exe /q /k
    ) <"$fifo" >>"$SONDARA_WINE_HOME/keeper.log" 2>&1 &
    sondara_wine_keeper_pid=$!
}

# Waits, 60 seconds at most, until the desktop process of the session's
# prefix runs. The warm-up's program starts it, and the keeper, there
# before, keeps it; were it not up when begin returns, a test could start it
# with the test's own output, which ctest would then wait on for good.
sondara_wine__wait_for_desktop()
{
    local deadline=$((SECONDS + 60)) pid
    while ((SECONDS < deadline)); do
        for pid in $(pgrep -f 'explorer\.exe /desktop'); do
            if tr '\0' '\n' <"/proc/$pid/environ" 2>/dev/null | grep -qxF "WINEPREFIX=$WINEPREFIX"; then
                return 0
            fi
        done
        sleep 0.2
    done
    echo "wine-env: the desktop did not start within 60 seconds" >&2
}

sondara_wine_begin()
{
    sondara_wine__defaults
    sondara_wine_started_xvfb_pid=""
    # The display has to be known to the first Wine command of the session,
    # so a server left from an earlier run (maybe without one) goes first.
    sondara_wine__spawn wineserver -k </dev/null >/dev/null 2>&1 || true
    if ! sondara_wine__display_usable "${DISPLAY:-}"; then
        sondara_wine__start_xvfb child || return 1
        export DISPLAY="$sondara_wine_xvfb_display"
        sondara_wine_started_xvfb_pid="$sondara_wine_xvfb_pid"
    fi
    echo "$DISPLAY" >"$SONDARA_WINE_HOME/display"
    sondara_wine__start_server || true
    sondara_wine__prepare_prefix || return 1
    # The keeper first: the desktop that the warm-up starts then never
    # finds itself without a user, however long the machine keeps the
    # keeper waiting.
    sondara_wine__start_keeper || return 1
    sondara_wine__warm_up || return 1
    sondara_wine__wait_for_desktop
    export SONDARA_WINE_SESSION=1
    echo "wine-env: DISPLAY=$DISPLAY WINEPREFIX=$WINEPREFIX" >&2
}

sondara_wine_end()
{
    [[ -n ${WINEPREFIX:-} ]] || return 0
    if [[ -n ${sondara_wine_keeper_fd:-} ]]; then
        exec {sondara_wine_keeper_fd}>&-
        sondara_wine_keeper_fd=""
    fi
    sondara_wine__spawn wineserver -k </dev/null >/dev/null 2>&1 || true
    if [[ -n ${sondara_wine_keeper_pid:-} ]]; then
        wait "$sondara_wine_keeper_pid" 2>/dev/null || true
        sondara_wine_keeper_pid=""
        rm -f "$SONDARA_WINE_HOME/keeper.fifo"
    fi
    if [[ -n ${sondara_wine_started_xvfb_pid:-} ]]; then
        kill "$sondara_wine_started_xvfb_pid" 2>/dev/null || true
        wait "$sondara_wine_started_xvfb_pid" 2>/dev/null || true
        rm -f "$SONDARA_WINE_HOME/display"
        sondara_wine_started_xvfb_pid=""
    fi
    unset SONDARA_WINE_SESSION
    return 0
}

sondara_wine_attach()
{
    sondara_wine__defaults
    if [[ ${SONDARA_WINE_SESSION:-} == 1 && -n ${DISPLAY:-} ]]; then
        return 0
    fi
    local lock_fd status=0
    exec {lock_fd}>"$SONDARA_WINE_HOME/lock"
    flock "$lock_fd"
    sondara_wine__attach_locked || status=$?
    exec {lock_fd}>&-
    return "$status"
}

# The part of attach that tests running side by side must not do at once.
sondara_wine__attach_locked()
{
    local recorded=""
    [[ -f $SONDARA_WINE_HOME/display ]] && recorded="$(<"$SONDARA_WINE_HOME/display")"
    if sondara_wine__display_usable "$recorded"; then
        export DISPLAY="$recorded"
    elif sondara_wine__display_usable "${DISPLAY:-}"; then
        echo "$DISPLAY" >"$SONDARA_WINE_HOME/display"
    else
        # A server still running was started without this display.
        sondara_wine__spawn wineserver -k </dev/null >/dev/null 2>&1 || true
        sondara_wine__start_xvfb detached || return 1
        export DISPLAY="$sondara_wine_xvfb_display"
        echo "$DISPLAY" >"$SONDARA_WINE_HOME/display"
    fi
    if sondara_wine__start_server; then
        sondara_wine__prepare_prefix || return 1
        sondara_wine__warm_up || return 1
    elif [[ ! -f $WINEPREFIX/.sondara-ready ]]; then
        sondara_wine__prepare_prefix || return 1
    fi
}

sondara_wine_japanese_locale()
{
    sondara_wine__defaults
    local folder="$SONDARA_WINE_HOME/locale"
    SONDARA_JAPANESE_LOCPATH=""
    if locale -a 2>/dev/null | grep -qix 'ja_JP\.utf-\?8'; then
        export SONDARA_JAPANESE_LOCPATH
        return 0
    fi
    if [[ ! -f $folder/ja_JP.UTF-8/LC_CTYPE ]]; then
        mkdir -p "$folder"
        # localedef warns about the definition's small faults and still
        # writes the locale; only a missing result counts.
        localedef -i ja_JP -f UTF-8 "$folder/ja_JP.UTF-8" >"$SONDARA_WINE_HOME/localedef.log" 2>&1 || true
        if [[ ! -f $folder/ja_JP.UTF-8/LC_CTYPE ]]; then
            sondara_wine__fail "could not make a ja_JP.UTF-8 locale" "$SONDARA_WINE_HOME/localedef.log"
            return 1
        fi
    fi
    export SONDARA_JAPANESE_LOCPATH="$folder"
}

sondara_wine_refuse_i686()
{
    local file="$1" offset machine
    [[ -f $file ]] || return 0
    [[ "$(head -c 2 "$file" 2>/dev/null)" == MZ ]] || return 0
    offset="$(od -An -tu4 -j60 -N4 "$file" | tr -d ' ')"
    [[ $offset =~ ^[0-9]+$ ]] || return 0
    machine="$(od -An -tx2 -j$((offset + 4)) -N2 "$file" | tr -d ' ')"
    if [[ $machine == 014c ]]; then
        echo "wine-env: $file is a 32-bit x86 program; 64-bit Wine would report it as passing without running it" >&2
        return 1
    fi
}
