#!/usr/bin/env bash
# The Python package as a user gets it: the wheel built, installed into a
# new venv that has nothing else in it, and the suite run there by Debian's
# pytest, whose folder the venv's interpreter reads behind its own, so that
# sondara comes from the venv (the suite checks that it does). The Python
# is Debian's, that of the wheel.
# usage: tests/python/run.sh CHECKER WORK [FAULT_SHIM]
#   CHECKER     sondara-check of the native build, the suite's reference
#   WORK        a folder for the wheel, the venv and the generated files
#   FAULT_SHIM  the native build's fault-shim library, for the read error
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
checker=$(realpath "$1")
work=$(realpath -m "$2")
shim=${3:+$(realpath "$3")}
rm -rf "$work"
mkdir -p "$work"

"$root/scripts/build-wheel.sh" "$work/dist" >"$work/build-wheel.log" 2>&1 || {
    cat "$work/build-wheel.log" >&2
    exit 1
}
/usr/bin/python3 -m venv "$work/venv"
"$work/venv/bin/python" -m pip install --no-index --no-deps --quiet "$work"/dist/sondara-*.whl
debian=$(/usr/bin/python3 -c 'import os, pytest; print(os.path.dirname(os.path.dirname(pytest.__file__)))')

cd "$work"
export SONDARA_CHECK="$checker" SONDARA_SOURCE="$root" SONDARA_FAULT_SHIM="$shim"
"$work/venv/bin/python" "$here/pytest_in_venv.py" "$debian" "$here"
