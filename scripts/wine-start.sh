#!/usr/bin/env bash
# Runs a Windows program under Wine (`wine-start.sh PROGRAM [ARGUMENT...]`,
# as `wine` takes them) and ends with its exit status: the one place where
# a start that Wine gave up is made again.
#
# Now and then, more often under load, Wine fails at its own start before
# the program runs: "Inconsistency detected by ld.so" and status 127. No
# program here ends with 127, so such a run is made again a second later,
# three times in all. SONDARA_WINE_START_FAILURES lists further statuses
# that mean the same for the program at hand (the window program, which
# never ends with 1, has once seen Wine give up with 1). Every run made
# again adds a line to build/wine-retries.log, which test.sh counts.
set -uo pipefail

log="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/wine-retries.log"
failures=" 127 ${SONDARA_WINE_START_FAILURES:-} "
child=0
# A stop of this script stops the program too.
trap 'if ((child > 0)); then kill -TERM "$child" 2>/dev/null; fi; exit 143' TERM INT

for attempt in 1 2 3; do
    # Standard input stays the script's (a job in the background would get
    # /dev/null).
    wine "$@" 0<&0 &
    child=$!
    wait "$child"
    status=$?
    child=0
    if [[ $failures != *" $status "* ]] || ((attempt == 3)); then
        exit "$status"
    fi
    mkdir -p "${log%/*}"
    echo "$(date -u +%FT%TZ) ${1##*/} ended with status $status at its start (attempt $attempt of 3)" >>"$log"
    echo "wine-start: ${1##*/}: Wine gave up its start with status $status; starting it again" >&2
    sleep 1
done
