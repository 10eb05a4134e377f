#!/usr/bin/env python3
"""Writes the Debian changelog of the package from CHANGELOG.md.

Usage: debian_changelog.py CHANGELOG.md PACKAGE VERSION "NAME <EMAIL>"

Each version of CHANGELOG.md (a heading "## VERSION (YYYY-MM-DD)") becomes
an entry, newest first, with its changes ("- " lines, and the indented lines
that go on with them) as the entry's items, wrapped as Debian wants them.
The entry's time is noon UTC of the heading's date, so that the same file
gives the same bytes. Fails unless the newest version is VERSION: the
package and its changelog must agree.
"""

import datetime
import email.utils
import re
import sys
import textwrap

HEADING = re.compile(r"^## (\S+) \((\d{4}-\d{2}-\d{2})\)\s*$")


def read_versions(path):
    """The versions of the file, as (version, date, [change, ...])."""
    versions = []
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            line = line.rstrip("\n")
            heading = HEADING.match(line)
            if heading:
                versions.append((heading.group(1), heading.group(2), []))
            elif not versions:
                continue
            elif line.startswith("- "):
                versions[-1][2].append(line[2:].strip())
            elif line.startswith("  ") and versions[-1][2]:
                versions[-1][2][-1] += " " + line.strip()
    return versions


def entry(package, version, date, changes, maintainer):
    noon = datetime.datetime.fromisoformat(date).replace(hour=12, tzinfo=datetime.timezone.utc)
    text = [f"{package} ({version}) unstable; urgency=medium", ""]
    for change in changes:
        # Debian's tools show what falls within 80 columns.
        text += textwrap.wrap(change.replace("`", ""), width=78, initial_indent="  * ",
                              subsequent_indent="    ")
    text += ["", f" -- {maintainer}  {email.utils.format_datetime(noon)}", ""]
    return "\n".join(text)


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__.strip().splitlines()[2])
    path, package, version, maintainer = sys.argv[1:]
    versions = read_versions(path)
    if not versions or versions[0][0] != version:
        found = versions[0][0] if versions else "no version"
        sys.exit(f"debian_changelog.py: {path}'s newest version is {found}, the package's {version}")
    for number, date, changes in versions:
        if not changes:
            sys.exit(f"debian_changelog.py: version {number} of {path} lists no change")
    sys.stdout.write("\n".join(entry(package, *v, maintainer) for v in versions))


if __name__ == "__main__":
    main()
