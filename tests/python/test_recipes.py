"""The recipes of python/recipes, run as a user runs them: a manifest of a
generated folder with pandas, the files fit to train on, and the same
manifest from a local Dask cluster of two worker processes."""

import os
import struct
import sys
from pathlib import Path

import pytest

import sondara

SOURCE = Path(os.environ["SONDARA_SOURCE"])
sys.path.insert(0, str(SOURCE / "python" / "recipes"))

import manifest  # noqa: E402  (the recipe, from its folder)


def wave(rate, channels, frames, data_size=None, tail=b""):
    """A 16-bit PCM file; data_size, when given, is what its header says."""
    align = 2 * channels
    fmt = b"fmt " + struct.pack("<IHHIIHH", 16, 1, channels, rate, rate * align, align, 16)
    audio = bytes(frames * align)
    size = len(audio) if data_size is None else data_size
    body = b"WAVE" + fmt + b"data" + struct.pack("<I", size) + audio
    return b"RIFF" + struct.pack("<I", len(body)) + body + tail


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    """A delivery of takes: most at 16 kHz mono, some at another rate, some
    unfinished, cut short, with stray bytes, or no WAV at all."""
    root = tmp_path_factory.mktemp("takes")
    for n in range(120):
        sub = root / f"speaker-{n % 4}"
        sub.mkdir(exist_ok=True)
        kind = n % 10
        data = {
            0: wave(44100, 2, 300),
            1: wave(16000, 1, 160 + n, data_size=0),
            2: wave(16000, 1, 400)[:60],
            3: wave(16000, 1, 200, tail=b"ab"),
            4: b"not a wave file at all",
        }.get(kind, wave(16000, 1, 1600 + n))
        (sub / f"take-{n:03}.wav").write_bytes(data)
    return root


def test_manifest_with_pandas_keeps_what_can_be_trained_on(folder):
    paths = manifest.wav_paths(folder)
    frame = manifest.manifest(paths, jobs=2)
    results = [sondara.check(path) for path in paths]
    assert list(frame.path) == paths
    assert list(frame.verdict) == [result.verdict for result in results]
    assert list(frame.sampleRate.fillna(0)) == [result.format.sample_rate or 0 for result in results]
    counts = frame.verdict.value_counts().to_dict()
    # A take cut short is sound to the report, and warned of.
    assert counts == {"ok": 72, "error": 24, "warning": 24}, counts

    kept = manifest.fit_to_train(frame, rate=16000, channels=1)
    # The sound takes and those with stray bytes after their audio; never an
    # unfinished one (its data size is 0: an error), a cut one or a
    # stranger.
    assert len(kept) == 72
    assert set(kept.verdict) == {"ok", "warning"}
    assert (kept.frames >= 200).all() and kept.seconds.sum() > 0


def test_dask_cluster_gives_the_verdicts_of_check_many(folder):
    distributed = pytest.importorskip("distributed")
    import cluster  # noqa: E402

    paths = manifest.wav_paths(folder)
    local = manifest.manifest(paths, jobs=2)
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as spread:
        with distributed.Client(spread) as client:
            assert len(client.scheduler_info()["workers"]) == 2
            far = cluster.cluster_manifest(client, paths, partitions=8)
    assert far.equals(local)
