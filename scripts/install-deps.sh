#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running need, and
# only when one of them is missing: the package lists are updated once, then
# everything missing goes in with one apt-get call (and a second one only for
# the runtime of a clang other than Debian's default). Safe to run without a TTY
# and without standard input. Run as root, or as a user who may use sudo
# (which may ask for a password).
set -euo pipefail

packages=(
    # The native build and its tests.
    cmake ninja-build g++ googletest
    # The MD5 of the audio (--md5) on Linux: OpenSSL's libcrypto.
    libssl-dev
    # The reader of delivery policies (TOML), header-only: the same headers
    # serve the native and the Windows builds.
    libtomlplusplus-dev
    # The Windows builds, and Wine on a virtual display to run them.
    g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools
    wine wine64 xvfb xdotool imagemagick fonts-noto-cjk fonts-wine
    # The end-to-end tests of the window: the X clipboard, their driver, and
    # the Japanese locale they make for the program.
    xclip python3 locales
    # The fuzz preset: clang, and the runtime of libFuzzer and the sanitizers
    # that goes with Debian's default clang (a clang of another version on
    # PATH gets its own runtime below).
    clang libclang-rt-dev
    # Differential tests: sox and ffmpeg write and read WAV files of their
    # own, the real-world files that the checker's warnings are tried on.
    sox ffmpeg
    # The cue points and sampler loops of --info against sndfile-info's.
    sndfile-programs
    # The loudness's oracle in the tests (never linked by the product), and
    # pkg-config that finds it.
    libebur128-dev pkg-config
    # The benchmarks measure time and peak memory with /usr/bin/time, and
    # set sondara-check beside mediainfo.
    time mediainfo
    # The release: the man page is read back with man, the version blocks of
    # the unpacked programs with exiftool...
    man-db libimage-exiftool-perl
    # ... and the .deb goes through Debian's own checks of a package.
    lintian
    # setsid and flock for the Wine session; part of every Debian system,
    # listed so that a trimmed one gets them too.
    util-linux
    # The Python package: the extension's bindings and headers, the wheel's
    # build tools, and a venv with pip in it where pytest tries the wheel.
    pybind11-dev python3-dev python3-build python3-wheel python3-setuptools
    python3-venv python3-pip-whl python3-pytest
    # Its recipes, run by the suite (a manifest with pandas, the same on a
    # Dask cluster), and its benchmark's partner, soundfile.
    python3-pandas python3-dask python3-distributed python3-soundfile
)

is_installed()
{
    dpkg -s "$1" 2>/dev/null | grep -qx 'Status: install ok installed'
}

missing_of()
{
    local package
    for package in "$@"; do
        is_installed "$package" || echo "$package"
    done
}

as_root=()
updated=0

# Installs the packages named, updating the package lists the first time.
install_packages()
{
    if [[ $(id -u) != 0 ]] && ((${#as_root[@]} == 0)); then
        if ! command -v sudo >/dev/null 2>&1; then
            echo "install-deps: these packages are missing: $*" >&2
            echo "install-deps: installing them needs root, and sudo is not installed; run this script as root" >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    echo "install-deps: installing $*"
    # Through env, so that the setting also passes sudo.
    local apt=(env DEBIAN_FRONTEND=noninteractive apt-get)
    local apt_options=(-y -q -o Dpkg::Use-Pty=0 -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold)
    if ((updated == 0)); then
        "${as_root[@]}" "${apt[@]}" update -q </dev/null || { echo "install-deps: apt-get update failed" >&2; exit 1; }
        updated=1
    fi
    "${as_root[@]}" "${apt[@]}" install "${apt_options[@]}" "$@" </dev/null ||
        { echo "install-deps: apt-get install failed; still missing: $*" >&2; exit 1; }
    local package
    for package in "$@"; do
        if ! is_installed "$package"; then
            echo "install-deps: $package is still missing after apt-get install" >&2
            exit 1
        fi
    done
}

mapfile -t missing < <(missing_of "${packages[@]}")
if ((${#missing[@]} > 0)); then
    install_packages "${missing[@]}"
fi

# libFuzzer and the sanitizers' runtimes come in a package named after
# clang's major version: the one of the clang++ that the fuzz preset finds.
major="$(clang++ -dumpversion 2>/dev/null | cut -d . -f 1)"
if [[ ! $major =~ ^[0-9]+$ ]]; then
    echo "install-deps: can't tell the version of clang++ (clang++ -dumpversion: '$major')" >&2
    exit 1
fi
mapfile -t missing < <(missing_of "libclang-rt-$major-dev")
if ((${#missing[@]} > 0)); then
    install_packages "${missing[@]}"
fi
