#!/usr/bin/env bash
# Installs what is missing, builds the native preset and runs the command-line
# checker: on the files given, or else on every sample under samples/.
set -euo pipefail

# Files named on the command line are taken from where the caller stands.
files=()
for file in "$@"; do
    files+=("$(realpath -m -- "$file")")
done

cd "$(dirname "${BASH_SOURCE[0]}")"
export DEBIAN_FRONTEND=noninteractive

scripts/install-deps.sh </dev/null
cmake --preset native </dev/null
cmake --build --preset native -j "${SONDARA_JOBS:-$(nproc)}" </dev/null

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

exec "$checker" "${files[@]}"
