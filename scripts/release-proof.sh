#!/usr/bin/env bash
# Proves that the download files of dist/ (./release.sh makes them) work
# where nothing of the build is: the 64-bit zip is unpacked into a new folder
# outside the repository and run in a Wine prefix of its own, made for this
# run; the window checks a file as a user would (typed path, start, report
# read back through the clipboard) and sondara-check.exe checks the same
# file, both with the native checker's report; both programs' version blocks
# are read back and must say the project's version, and so must
# sondara-check --version. The 32-bit zip holds 32-bit programs of the same
# version, and every Windows program is marked for ASLR and DEP. The .deb
# passes lintian with no error and no note of hardening, and is unpacked into
# a scratch root, whose sondara-check tells its version and whose man page
# man reads; the tarball's checker tells its version too, and the wheel
# installs into a new venv and checks the sample as the native checker does.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root="$PWD"
exec </dev/null

version="$(sed -n 's/^project(Sondara VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)"
block_version="${version//./, }"
sample="$root/samples/truncated.wav"
failures=0
fail()
{
    echo "release-proof: $*" >&2
    failures=$((failures + 1))
}

scratch="$(mktemp -d)"
# Only what this script made goes; the Wine session ends first.
cleanup()
{
    if declare -F sondara_wine_end >/dev/null; then
        sondara_wine_end || true
    fi
    rm -rf "$scratch"
}
trap cleanup EXIT

# What the native checker says of the sample: the report the programs of the
# zip must give.
expected="$({ build/native/sondara-check --json "$sample" || true; } | python3 -c '
import json, sys
print(json.load(sys.stdin)[0]["report"].replace("\r\n", "\n").rstrip("\n"))')"

# version_block ARCH FILE: the machine and version block exiftool reads from
# a program, checked against the zip's architecture and the version.
version_block()
{
    local machine="Intel 386 or later, and compatibles"
    [[ $1 == x86_64 ]] && machine="AMD AMD64"
    exiftool -j -MachineType -FileVersion -ProductVersion "$2" | python3 -c '
import json, sys
facts = json.load(sys.stdin)[0]
print("%s: %s, version block %r" % (sys.argv[1], facts.get("MachineType"), facts.get("FileVersion")))
wanted = {"MachineType": sys.argv[2], "FileVersion": sys.argv[3], "ProductVersion": sys.argv[3]}
sys.exit(any(facts.get(key) != value for key, value in wanted.items()))' \
        "${2#"$scratch"/}" "$machine" "$block_version" || fail "$2: not a $1 program of version $block_version"
}

for arch in x86 x86_64; do
    zip="dist/Sondara-$version-windows-$arch.zip"
    [[ -f $zip ]] || { fail "$zip is missing: run ./release.sh first"; continue; }
    unzip -q "$zip" -d "$scratch/$arch"
    folder="$scratch/$arch/Sondara-$version-windows-$arch"
    for file in Sondara.exe sondara-check.exe Main.jpn README-ja.txt LICENSE.txt NOTICES.txt; do
        [[ -f $folder/$file ]] || fail "$zip holds no $file"
    done
    version_block "$arch" "$folder/Sondara.exe"
    version_block "$arch" "$folder/sondara-check.exe"
    # Both programs load at a random address and never run data.
    for file in Sondara.exe sondara-check.exe; do
        flags="$(x86_64-w64-mingw32-objdump -p "$folder/$file" | sed -n '/^DllCharacteristics/,/^[A-Z]/p')"
        grep -qw DYNAMIC_BASE <<<"$flags" && grep -qw NX_COMPAT <<<"$flags" ||
            fail "$zip's $file is not marked for ASLR and DEP: $(head -n 1 <<<"$flags")"
    done
done

# The 64-bit programs at work, in a Wine prefix and on a display of their
# own.
folder="$scratch/x86_64/Sondara-$version-windows-x86_64"
if [[ -f $folder/Sondara.exe ]]; then
    export SONDARA_WINE_HOME="$scratch/wine"
    # shellcheck source=scripts/wine-env.sh
    source scripts/wine-env.sh
    if sondara_wine_begin; then
        sondara_wine_japanese_locale
        said="$(cd "$folder" && "$root/scripts/wine-start.sh" sondara-check.exe --version | tr -d '\r' | head -n 1)"
        echo "sondara-check.exe --version: $said"
        [[ $said == "sondara-check $version" ]] || fail "sondara-check.exe --version says '$said'"
        checked="$(cd "$folder" && { "$root/scripts/wine-start.sh" sondara-check.exe --json "Z:${sample//\//\\}" || true; } | python3 -c '
import json, sys
print(json.load(sys.stdin)[0]["report"].replace("\r\n", "\n").rstrip("\n"))')" || true
        [[ $checked == "$expected" ]] || fail "sondara-check.exe's report differs: '$checked'"
        shown="$(python3 -B tests/e2e/show.py --build "$folder" --probe build/windows/window-probe.exe \
            --out "$scratch/window" --screenshot "$scratch/window/window.png" "$sample")" ||
            fail "the window did not check $sample as it should: $shown"
        report="$(sed '1d;$d' <<<"$shown" | tr -d '\r')"
        echo "the window's report: $report"
        [[ $report == "$expected" ]] || fail "the window's report differs from the checker's: '$expected'"
        sondara_wine_end
    else
        fail "a Wine session in a new prefix did not begin"
    fi
fi

# The Linux checker, from the .deb and from the tarball.
deb="dist/sondara-check_${version}_amd64.deb"
if [[ -f $deb ]]; then
    dpkg-deb -x "$deb" "$scratch/root"
    said="$("$scratch/root/usr/bin/sondara-check" --version | head -n 1)"
    echo "deb: $said; control: $(dpkg-deb -f "$deb" Package Version Architecture | paste -sd ' ')"
    [[ $said == "sondara-check $version" ]] || fail "the .deb's sondara-check --version says '$said'"
    page="$(MANWIDTH=80 man -l "$scratch/root/usr/share/man/man1/sondara-check.1.gz" 2>&1 | col -b)"
    grep -q "sondara-check $version" <<<"$page" || grep -q "$version" <<<"$page" ||
        fail "the man page does not read back with its version: $(head -n 3 <<<"$page")"
    grep -q -- "--levels" <<<"$page" || fail "the man page says nothing of --levels"
    echo "man page: $(wc -l <<<"$page") lines"
    # Debian's own checks of a package: no error, and the checker is built
    # hardened as Debian builds its packages.
    said="$(lintian --info --tag-display-limit 0 "$deb" 2>&1 | grep -v 'root privileges' || true)"
    echo "lintian: ${said:-nothing to say}"
    if grep -q '^E: ' <<<"$said" || grep -q 'hardening' <<<"$said"; then
        fail "lintian finds fault with $deb"
    fi
else
    fail "$deb is missing"
fi
tarball="dist/sondara-check-$version-linux-x86_64.tar.gz"
if [[ -f $tarball ]]; then
    tar -xzf "$tarball" -C "$scratch"
    said="$("$scratch/sondara-check-$version-linux-x86_64/sondara-check" --version | head -n 1)"
    [[ $said == "sondara-check $version" ]] || fail "the tarball's sondara-check --version says '$said'"
else
    fail "$tarball is missing"
fi
# The wheel, into a new venv, offline, with nothing else: it checks the
# sample as the native checker does, at the project's version.
wheels=(dist/sondara-"$version"-*-linux_x86_64.whl)
if [[ -f ${wheels[0]} ]]; then
    /usr/bin/python3 -m venv "$scratch/venv"
    "$scratch/venv/bin/python" -m pip install --no-index --quiet "${wheels[0]}"
    said="$(cd "$scratch" && venv/bin/python -c 'import sondara, sys
print(sondara.__version__)
print(sondara.check(sys.argv[1]).report.replace("\r\n", "\n").rstrip("\n"))' "$sample")"
    echo "wheel: $(basename "${wheels[0]}"), sondara ${said%%$'\n'*}"
    [[ $said == "$version"$'\n'"$expected" ]] || fail "the wheel's sondara says '$said'"
else
    fail "the wheel is missing from dist/"
fi
(cd dist && sha256sum --check --quiet SHA256SUMS) || fail "dist/SHA256SUMS does not match the files"

if ((failures > 0)); then
    echo "release-proof: $failures failed" >&2
    exit 1
fi
echo "release-proof: the download files work"
