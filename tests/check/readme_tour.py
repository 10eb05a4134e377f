#!/usr/bin/env python3
"""The README's tour of sondara-check, run: each block of README.md fenced
as "console" whose first line is "$ sondara-check ..." is a command, and
the rest of the block is what it prints.

  readme_tour.py check SONDARA-CHECK SOURCE-ROOT WORK-FOLDER
  readme_tour.py write SONDARA-CHECK SOURCE-ROOT WORK-FOLDER

The commands run in their order in one empty folder of WORK-FOLDER that
reaches the samples as samples/, so that a command may read what one before
it wrote (a tidy copy), and the paths printed are the same on every
machine. `check` fails naming each command whose output differs, with what
it printed now; `write` puts what the build prints now into the README.
"""
import os
import re
import shlex
import shutil
import subprocess
import sys

BLOCK = re.compile(r"(```console\n\$ (sondara-check[^\n]*)\n)(.*?)(```)", re.DOTALL)


def run(checker, command, folder):
    arguments = shlex.split(command)[1:]
    result = subprocess.run([checker] + arguments, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, timeout=60)
    return result.stdout.decode("utf-8")


def main(argv):
    if len(argv) != 5 or argv[1] not in ("check", "write"):
        print(__doc__, file=sys.stderr)
        return 2
    mode, checker, root, work = argv[1], os.path.abspath(argv[2]), argv[3], argv[4]
    readme_path = os.path.join(root, "README.md")
    with open(readme_path, encoding="utf-8") as file:
        readme = file.read()
    folder = os.path.join(work, "tour")
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    os.symlink(os.path.abspath(os.path.join(root, "samples")), os.path.join(folder, "samples"))

    blocks = list(BLOCK.finditer(readme))
    if not blocks:
        print("readme_tour: README.md has no block that runs sondara-check", file=sys.stderr)
        return 1
    differing = []
    made = readme
    # Replaced from the last block back, so that the earlier ones keep their places.
    printed = [run(checker, block.group(2), folder) for block in blocks]
    for block, output in reversed(list(zip(blocks, printed))):
        if output != block.group(3):
            differing.append((block.group(2), output))
            made = made[:block.start(3)] + output + made[block.end(3):]
    if mode == "write":
        if made != readme:
            with open(readme_path, "w", encoding="utf-8") as file:
                file.write(made)
            print("readme_tour: wrote the output of %d commands into README.md" % len(differing))
        return 0
    for command, output in reversed(differing):
        print("readme_tour: README.md shows other output for\n  $ %s\nwhich now prints:\n%s" % (command, output),
              file=sys.stderr)
    if differing:
        print("readme_tour: if the change is meant, run readme_tour.py write", file=sys.stderr)
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
