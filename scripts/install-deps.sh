#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running need, and
# only when one of them is missing: the package lists are updated once, then
# everything missing goes in with one apt-get call. Safe to run without a TTY
# and without standard input.
set -euo pipefail

packages=(
    cmake ninja-build g++
    g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools
    wine wine64 xvfb xdotool imagemagick fonts-noto-cjk fonts-wine
    googletest clang libclang-rt-14-dev
    # The end-to-end tests of the window: the X clipboard, their driver, and
    # the Japanese locale they make for the program.
    xclip python3 locales
)

is_installed()
{
    dpkg -s "$1" 2>/dev/null | grep -qx 'Status: install ok installed'
}

missing=()
for package in "${packages[@]}"; do
    is_installed "$package" || missing+=("$package")
done

if ((${#missing[@]} == 0)); then
    exit 0
fi

echo "install-deps: installing ${missing[*]}"

as_root=()
if [[ $(id -u) != 0 ]]; then
    as_root=(sudo -n)
fi

export DEBIAN_FRONTEND=noninteractive
apt_options=(-y -q -o Dpkg::Use-Pty=0 -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold)
"${as_root[@]}" apt-get update -q </dev/null
"${as_root[@]}" apt-get install "${apt_options[@]}" "${missing[@]}" </dev/null

for package in "${missing[@]}"; do
    if ! is_installed "$package"; then
        echo "install-deps: $package is still missing after apt-get install" >&2
        exit 1
    fi
done
