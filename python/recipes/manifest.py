"""A dataset's manifest with pandas: one row a WAV file of a folder, its
verdict and the codes of its findings beside its header facts; then only the
files fit to train on.

    python3 manifest.py FOLDER [RATE CHANNELS]

prints the manifest's counts and writes manifest.csv and keep.txt (the paths
fit to train on) into the current folder.
"""

import os
import sys

import pandas

import sondara


def wav_paths(folder):
    """The .wav files under folder, in a stable order."""
    paths = []
    for root, folders, files in os.walk(folder):
        folders.sort()
        paths += [os.path.join(root, name) for name in sorted(files) if name.lower().endswith(".wav")]
    return paths


def row(result):
    """A manifest row: path, verdict, codes, then the header facts."""
    codes = " ".join(finding.code for finding in result.findings)
    return {"path": result.path, "verdict": result.verdict, "codes": codes, **result.format.to_dict()}


def manifest(paths, jobs=2):
    """The manifest of the files, checked on jobs threads, in their order."""
    return pandas.DataFrame([row(result) for result in sondara.check_many(paths, jobs=jobs)])


# Warnings of audio that is not all there, or that loaders read each their
# own way: a file cut short, a size an unfinished recording left, a partial
# last frame. The report calls such a file sound; a dataset shouldn't.
NOT_WHOLE = {"data.truncated", "data.size-placeholder", "data.partial-frame"}


def fit_to_train(frame, rate, channels):
    """The rows of files whose check found no error and no audio that is
    not whole, at the rate and channels the model takes, with at least one
    frame. Other warnings (stray bytes after the audio, metadata) keep a
    file: its audio is whole."""
    whole = frame.codes.map(lambda codes: NOT_WHOLE.isdisjoint(codes.split()))
    keep = (frame.verdict != "error") & whole & (frame.sampleRate == rate) & (frame.channels == channels)
    return frame[keep & (frame.frames > 0)]


def main():
    folder = sys.argv[1]
    rate, channels = (int(sys.argv[2]), int(sys.argv[3])) if len(sys.argv) == 4 else (44100, 2)
    frame = manifest(wav_paths(folder))
    kept = fit_to_train(frame, rate, channels)
    frame.to_csv("manifest.csv", index=False)
    with open("keep.txt", "w", encoding="utf-8") as keep:
        keep.writelines(path + "\n" for path in kept.path)
    print(frame.verdict.value_counts().to_string())
    print(f"{len(kept)} of {len(frame)} files fit to train on, {kept.seconds.sum():.1f} s of audio")


if __name__ == "__main__":
    main()
