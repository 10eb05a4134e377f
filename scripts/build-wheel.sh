#!/usr/bin/env bash
# Builds the wheel of the Python package sondara (python/) into the folder
# given (dist/ when none): configures and builds the extension with the
# CMake preset "python", puts it beside the package in a folder of its own,
# and packs that with Debian's setuptools and build, offline. The wheel is
# tagged for this Python and platform. Its files carry the time of the last
# commit (SOURCE_DATE_EPOCH, unless set), so that two clones of one commit
# write the same bytes. Debian's Python builds it, and the wheel is for it
# (another python3 on PATH has neither Debian's build nor its pybind11).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
out=$(realpath -m "${1:-$root/dist}")
cd "$root"
umask 022
if [[ -z ${SOURCE_DATE_EPOCH:-} ]]; then
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || echo 315532800)
fi
export SOURCE_DATE_EPOCH

cmake --preset python >/dev/null
cmake --build --preset python -j2

stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
cp -r python/sondara python/pyproject.toml python/setup.py python/README.md "$stage"/
cp packaging/LICENSE.txt build/python/python/version.txt "$stage"/
cp build/python/python/_sondara*.so "$stage"/sondara/
find "$stage" -name __pycache__ -prune -exec rm -rf {} +
mkdir -p "$out"
# From the stage, where no folder named build hides the module of that name.
(cd "$stage" && /usr/bin/python3 -m build --wheel --no-isolation --outdir "$out" . >"$stage/build.log" 2>&1) || {
    cat "$stage/build.log" >&2
    exit 1
}
ls "$out"/sondara-*.whl
