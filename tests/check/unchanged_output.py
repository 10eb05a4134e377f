#!/usr/bin/env python3
"""sondara-check's JSON output for the files in the tree, against digests
of what an earlier build printed for them.

  unchanged_output.py check SONDARA-CHECK SOURCE-ROOT WORK-FOLDER DIGESTS
  unchanged_output.py write SONDARA-CHECK SOURCE-ROOT WORK-FOLDER DIGESTS

The files are the samples and the wave fuzzing corpora (seeds and
regressions). Each is run alone through the report, --chunks, --levels and
--tidy, all with --json. A digest covers the exit status and every byte
printed, and for --tidy the bytes of the copy as well; the report's
findings, which came later, are left out of its digest. `check` fails on the
first file whose digest differs, saying which and what was printed now;
`write` records the digests of the build given, for a change of output
that is meant.

The runs stand in folders of WORK-FOLDER, one for each run at a time,
which reach the tree by a link named src, so the paths in the output are
the same on every machine.
"""
import concurrent.futures
import glob
import hashlib
import itertools
import os
import subprocess
import sys
import threading

MODES = ["report", "--chunks", "--levels", "--tidy"]
COPY = "copy.wav"


def corpus(source_root):
    patterns = ["samples/*.wav", "fuzz/seeds/wave/*", "fuzz/regressions/wave/*"]
    files = []
    for pattern in patterns:
        files += sorted(os.path.relpath(path, source_root) for path in glob.glob(os.path.join(source_root, pattern)))
    return [os.path.join("src", path) for path in files]


def without_findings(stdout):
    """The report's JSON as it was before each object gained its findings:
    the fields before them are the record's, byte for byte."""
    lines = []
    for line in stdout.split(b"\n"):
        start = line.find(b', "findings": [')
        if start >= 0:
            line = line[:start] + b"}" + (b"," if line.endswith(b",") else b"")
        lines.append(line)
    return b"\n".join(lines)


def run(checker, mode, path, folder):
    """The digest of one run in folder, and what it printed."""
    copy = os.path.join(folder, COPY)
    if os.path.exists(copy):
        os.remove(copy)
    options = {"report": [], "--tidy": ["--tidy", COPY]}.get(mode, [mode])
    # INFO texts are decoded in the locale's character set: one locale for all.
    environment = dict(os.environ, LC_ALL="C.UTF-8")
    result = subprocess.run([checker, "--json"] + options + ["--", path], capture_output=True, env=environment,
                            cwd=folder)
    stdout = without_findings(result.stdout) if mode == "report" else result.stdout
    digest = hashlib.sha256(b"%d\n" % result.returncode + stdout)
    if os.path.exists(copy):
        with open(copy, "rb") as made:
            digest.update(made.read())
        os.remove(copy)
    return digest.hexdigest()[:16], result.stdout


def main():
    if len(sys.argv) != 6 or sys.argv[1] not in ("check", "write"):
        sys.exit(__doc__)
    action, checker, source_root, work, digests_path = sys.argv[1:]
    checker = os.path.abspath(checker)
    source_root = os.path.abspath(source_root)
    digests_path = os.path.abspath(digests_path)
    os.makedirs(work, exist_ok=True)

    files = corpus(source_root)
    if not files:
        sys.exit("unchanged_output: no files found under " + source_root)
    runs = [(mode, path) for path in files for mode in MODES]

    # A folder for each thread, made the first time the thread runs.
    folders = threading.local()
    numbers = itertools.count()

    def run_in_own_folder(mode_and_path):
        if not hasattr(folders, "path"):
            folders.path = os.path.join(os.path.abspath(work), f"run-{next(numbers)}")
            os.makedirs(folders.path, exist_ok=True)
            link = os.path.join(folders.path, "src")
            if os.path.lexists(link):
                os.remove(link)
            os.symlink(source_root, link)
        return run(checker, *mode_and_path, folders.path)

    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        results = list(pool.map(run_in_own_folder, runs))
    lines = [f"{digest} {mode} {path}" for (mode, path), (digest, _) in zip(runs, results)]
    printed = {run_: output for run_, (_, output) in zip(runs, results)}
    if action == "write":
        with open(digests_path, "w") as out:
            out.write("\n".join(lines) + "\n")
        print(f"{len(lines)} digests written")
        return

    with open(digests_path) as recorded_file:
        recorded = recorded_file.read().splitlines()
    if len(recorded) != len(lines):
        sys.exit(f"unchanged_output: {len(lines)} runs now, {len(recorded)} digests recorded: the corpus changed")
    for now, before in zip(lines, recorded):
        if now != before:
            _, mode, path = now.split(" ", 2)
            text = printed[(mode, path)].decode("utf-8", "replace")
            sys.exit(f"unchanged_output: differs from the record\n  now:    {now}\n  before: {before}\n"
                     f"printed now:\n{text[:2000]}")
    print(f"{len(lines)} passed, 0 failed")


if __name__ == "__main__":
    main()
