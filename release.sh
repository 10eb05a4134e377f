#!/usr/bin/env bash
# Makes the download files in dist/, from the builds that the tests try:
#   Sondara-VERSION-windows-x86.zip     the product: the 32-bit Sondara.exe,
#                                       Main.jpn, sondara-check.exe, the guide
#                                       in Japanese, the licence and notices,
#                                       in one folder of the same name
#   Sondara-VERSION-windows-x86_64.zip  the same, 64-bit
#   sondara-check_VERSION_amd64.deb     the Linux checker with its man page
#   sondara-check-VERSION-linux-x86_64.tar.gz   the same, to unpack anywhere
#   sondara-VERSION-cpXY-cpXY-linux_x86_64.whl  the Python package, for
#                                       the machine's (Debian's) Python
#   SHA256SUMS                          over all of them
# The version is the project's (CMakeLists.txt). Every file's time is the
# commit's, and owners, order and compression are fixed: two runs from the
# same commit give the same bytes. Installs and builds what is missing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
export DEBIAN_FRONTEND=noninteractive
exec </dev/null
jobs="${SONDARA_JOBS:-$(nproc)}"

scripts/install-deps.sh
version="$(sed -n 's/^project(Sondara VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)"
if [[ ! $version =~ ^[0-9]+\.[0-9]+\.[0-9]+\.[0-9]+$ ]]; then
    echo "release.sh: no version of four numbers in CMakeLists.txt's project()" >&2
    exit 1
fi
# The time of every file in the archives: the commit's (or, outside git, the
# newest source file's).
SOURCE_DATE_EPOCH="$(git log -1 --format=%ct 2>/dev/null ||
    find src layout packaging -type f -printf '%T@\n' | sort -n | tail -n 1 | cut -d . -f 1)"
export SOURCE_DATE_EPOCH

# The programs, from the presets the tests build (only these targets, when
# the rest is not built yet).
build()
{
    local preset="$1"
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" -j "$jobs" --target "$@"
}
build native sondara-check
build windows Sondara sondara-check
build windows32 Sondara sondara-check

dist=dist
stage="$(mktemp -d)"
trap 'rm -rf "$stage"' EXIT
rm -rf "$dist"
mkdir -p "$dist"

# windows ARCH BUILD STRIP: the zip of one Windows build.
windows()
{
    local name="Sondara-$version-windows-$1" build="$2" strip="$3"
    local folder="$stage/$name"
    mkdir -p "$folder"
    "$strip" -o "$folder/Sondara.exe" "$build/Sondara.exe"
    "$strip" -o "$folder/sondara-check.exe" "$build/sondara-check.exe"
    cp layout/Main.jpn "$folder/Main.jpn"
    # The shipped delivery policies, where --policy NAME finds them.
    cp -r policies "$folder/policies"
    # The guide as Windows editors want it: a byte order mark, CR LF.
    { printf '\xEF\xBB\xBF'; sed "s/@VERSION@/$version/g; s/\$/\r/" packaging/guide-ja.txt; } >"$folder/README-ja.txt"
    cp packaging/LICENSE.txt packaging/NOTICES.txt "$folder/"
    python3 -B packaging/zip_folder.py "$stage" "$name" "$dist/$name.zip"
}
windows x86 build/windows32 i686-w64-mingw32-strip
windows x86_64 build/windows x86_64-w64-mingw32-strip

# The Linux checker: a tree under /usr, as the .deb installs it and as the
# tarball holds it.
root="$stage/deb"
mkdir -p "$root/DEBIAN" "$root/usr/bin" "$root/usr/share/man/man1" "$root/usr/share/doc/sondara-check"
mkdir -p "$root/usr/share/sondara-check/policies"
cp policies/*.toml "$root/usr/share/sondara-check/policies/"
strip --remove-section=.comment -o "$root/usr/bin/sondara-check" build/native/sondara-check
sed "s/@VERSION@/$version/g" packaging/sondara-check.1 | gzip -9n >"$root/usr/share/man/man1/sondara-check.1.gz"
cp packaging/LICENSE.txt "$root/usr/share/doc/sondara-check/copyright"
# The changelog of a package whose version is its own (no Debian revision),
# made from CHANGELOG.md.
maintainer="$(sed -n 's/^Maintainer: //p' packaging/deb-control)"
python3 -B packaging/debian_changelog.py CHANGELOG.md sondara-check "$version" "$maintainer" |
    gzip -9n >"$root/usr/share/doc/sondara-check/changelog.gz"
sed "s/@VERSION@/$version/g; s/@SIZE@/$(du -k -s "$root/usr" | cut -f 1)/" packaging/deb-control >"$root/DEBIAN/control"
find "$root" -type d -exec chmod 0755 {} +
find "$root" -type f -exec chmod 0644 {} +
chmod 0755 "$root/usr/bin/sondara-check"
(cd "$root" && find usr -type f -print0 | LC_ALL=C sort -z | xargs -0 md5sum >DEBIAN/md5sums)
chmod 0644 "$root/DEBIAN/md5sums"
find "$root" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
dpkg-deb --root-owner-group -Zxz --build "$root" "$dist/sondara-check_${version}_amd64.deb" >/dev/null

tarball="sondara-check-$version-linux-x86_64"
mkdir -p "$stage/$tarball"
cp -a "$root/usr/bin/sondara-check" "$stage/$tarball/"
cp -a "$root/usr/share/sondara-check/policies" "$stage/$tarball/policies"
sed "s/@VERSION@/$version/g" packaging/sondara-check.1 >"$stage/$tarball/sondara-check.1"
cp packaging/LICENSE.txt packaging/NOTICES.txt "$stage/$tarball/"
find "$stage/$tarball" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
tar --create --sort=name --owner=0 --group=0 --numeric-owner --mtime="@$SOURCE_DATE_EPOCH" \
    --mode='u+rw,go+r-w' --directory="$stage" "$tarball" | gzip -9n >"$dist/$tarball.tar.gz"

# The wheel, built with the same SOURCE_DATE_EPOCH.
scripts/build-wheel.sh "$dist" >/dev/null

(cd "$dist" && sha256sum -- *.zip *.deb *.tar.gz *.whl >SHA256SUMS)
echo "release.sh: Sondara $version in $dist/:"
(cd "$dist" && ls -l)
