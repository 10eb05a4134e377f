"""Zips one folder the same way every time, for the release:
    python3 zip_folder.py PARENT NAME OUT.zip
puts PARENT/NAME and everything below it into OUT.zip as NAME/..., the
entries sorted by name, every one stamped with SOURCE_DATE_EPOCH (in UTC,
1980 at the earliest, as zip can hold no earlier time) and marked
read-write for its owner and readable for all.
"""
import os
import sys
import time
import zipfile


def main(parent, name, out):
    epoch = max(int(os.environ.get("SOURCE_DATE_EPOCH", "0")), 315532800)
    stamp = time.gmtime(epoch)[:6]
    paths = []
    for folder, folders, files in os.walk(os.path.join(parent, name)):
        folders.sort()
        relative = os.path.relpath(folder, parent)
        paths.append(relative + "/")
        paths.extend(os.path.join(relative, file) for file in sorted(files))
    with zipfile.ZipFile(out, "w") as archive:
        for path in sorted(paths):
            info = zipfile.ZipInfo(path.replace(os.sep, "/"), date_time=stamp)
            info.create_system = 3  # Unix, so that the modes below count
            if path.endswith("/"):
                info.external_attr = (0o40755 << 16) | 0x10
                archive.writestr(info, b"")
            else:
                info.external_attr = 0o100644 << 16
                info.compress_type = zipfile.ZIP_DEFLATED
                with open(os.path.join(parent, path), "rb") as source:
                    archive.writestr(info, source.read(), compresslevel=9)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
