"""The package sondara as installed from its wheel, against sondara-check
itself: the same JSON for every sample and fuzzing input, by path and by
bytes; the documented exceptions; check_many's order, window and faults;
the levels."""

import errno
import json
import os
import random
import socket
import subprocess
import sys
from pathlib import Path

import pytest

import sondara

CHECKER = os.environ["SONDARA_CHECK"]
SOURCE = Path(os.environ["SONDARA_SOURCE"])
SAMPLE = SOURCE / "samples" / "sound-16bit-stereo.wav"


def checker_json(*arguments):
    done = subprocess.run([CHECKER, *map(str, arguments)], capture_output=True, check=False)
    assert done.returncode in (0, 1), done.stderr
    return done.stdout


def inputs():
    """Every sample, and every input of the fuzzing corpora of the reader
    and the levels."""
    files = sorted((SOURCE / "samples").glob("*.wav"))
    for folder in ("regressions/wave", "seeds/wave", "regressions/levels", "seeds/levels"):
        files += sorted(path for path in (SOURCE / "fuzz" / folder).iterdir() if path.is_file())
    return files


def test_imported_from_the_venv_at_the_checker_version():
    assert sys.prefix != sys.base_prefix
    assert Path(sondara.__file__).resolve().is_relative_to(Path(sys.prefix).resolve())
    assert sondara.__version__ in checker_json("--version").decode()


def test_path_bytes_and_checker_agree_on_every_input():
    files = inputs()
    assert len(files) > 100
    expected = json.loads(checker_json("--json", *files))
    assert len(expected) == len(files)
    for path, reference in zip(files, expected):
        by_path = sondara.check(str(path))
        assert by_path.to_dict() == reference, path
        # Under a name that no file has: nothing is read from disk.
        data, name = path.read_bytes(), "held:" + path.name
        for held in (data, bytearray(data), memoryview(data)):
            assert sondara.check(held, name=name).to_dict() == dict(reference, path=name), path
        assert by_path.path == str(path)
        assert by_path.report == reference["report"]
        assert [f.code for f in by_path.findings] == [f["code"] for f in reference["findings"]]
        assert by_path.format.to_dict() == reference["format"]
        warned = any(f["severity"] == "warning" for f in reference["findings"])
        assert by_path.verdict == ("error" if reference["hasError"] else "warning" if warned else "ok")
    # The single file of the checker's example.
    assert json.loads(checker_json("--json", SAMPLE)) == [sondara.check(SAMPLE).to_dict()]


def test_truncated_empty_and_typed_fields(tmp_path):
    truncated = sondara.check(SOURCE / "samples" / "truncated.wav")
    assert truncated.verdict == "error" and truncated.has_error
    codes = {finding.code: finding for finding in truncated.findings}
    assert codes["riff.size-mismatch"].declared == 17676 and codes["riff.size-mismatch"].actual == 22
    assert codes["data.missing"].offset is None and codes["format.bits"].chunk == "fmt "

    empty = tmp_path / "empty.wav"
    empty.write_bytes(b"")
    from_bytes = sondara.check(b"").to_dict()
    assert from_bytes["path"] == "<bytes>"
    assert json.loads(checker_json("--json", empty)) == [dict(from_bytes, path=str(empty))]
    sound = sondara.check(SAMPLE)
    assert sound.verdict == "ok"
    assert (sound.format.container, sound.format.format_tag, sound.format.sample_rate, sound.format.channels,
            sound.format.bits, sound.format.frames) == ("riff", 1, 44100, 2, 16, 4410)
    assert (truncated.format.bits, truncated.format.frames, truncated.format.seconds) == (0, None, None)


def test_sources_without_a_result_raise_the_documented_exceptions(tmp_path):
    missing = tmp_path / "missing.wav"
    for source, error in ((missing, FileNotFoundError), (tmp_path, IsADirectoryError)):
        for call in (sondara.check, sondara.levels):
            with pytest.raises(error) as raised:
                call(source)
            assert raised.value.filename == str(source)
    # A file that can't be opened (root opens any regular file): the
    # system's own error, where the checker says file.unreadable.
    unopenable = tmp_path / "socket.wav"
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(unopenable))
        assert json.loads(checker_json("--json", unopenable))[0]["findings"][0]["code"] == "file.unreadable"
        for call in (sondara.check, sondara.levels):
            with pytest.raises(OSError) as raised:
                call(unopenable)
            assert raised.value.errno == errno.ENXIO and raised.value.filename == str(unopenable)
    strided = memoryview(SAMPLE.read_bytes())[::2]
    for wrong in (12, None, ["a.wav"], strided, "a\0b"):
        with pytest.raises((TypeError, ValueError)):
            sondara.check(wrong)
    with pytest.raises(TypeError):
        sondara.check(SAMPLE, name="x")
    with pytest.raises(TypeError):
        sondara.check(b"", name=3)
    with pytest.raises(ValueError):
        sondara.check_many([], errors="ignore")
    with pytest.raises(ValueError):
        sondara.check_many([], jobs=0)


def generated_files(folder, count):
    """count files cut and bent from the sample in many ways."""
    base = SAMPLE.read_bytes()
    pick = random.Random(7)
    paths = []
    for index in range(count):
        data = bytearray(base[: pick.choice([0, 3, 12, 20, 36, 44, 45, 100, len(base)])])
        for _ in range(pick.randrange(3)):
            if data:
                data[pick.randrange(len(data))] = pick.randrange(256)
        path = folder / f"g{index:04d}.wav"
        path.write_bytes(bytes(data))
        paths.append(path)
    return paths


def test_check_many_gives_the_checkers_jsonl_in_order(tmp_path):
    paths = generated_files(tmp_path, 1000)
    lines = checker_json("--jsonl", "-j", "2", *paths).decode().splitlines()
    expected = [json.loads(line) for line in lines]
    assert expected.pop()["type"] == "summary"
    for item in expected:
        assert item.pop("type") == "file"
    results = sondara.check_many(map(str, paths), jobs=2)
    got = []
    for result in results:
        # Never more than the window ahead of the caller.
        assert results._queue.pending <= 16
        got.append(result.to_dict())
    assert got == expected
    # Bytes and named bytes among paths, in their places.
    mixed = [paths[0], paths[1].read_bytes(), (str(paths[2]), paths[2].read_bytes())]
    assert [r.to_dict() for r in sondara.check_many(mixed, jobs=2)] == [
        expected[0], dict(expected[1], path="<bytes>"), expected[2]]


def test_check_many_faults_come_in_place_and_the_run_goes_on(tmp_path):
    paths = generated_files(tmp_path, 200)
    results = sondara.check_many(paths, jobs=2)
    first = next(results)
    paths[150].unlink()  # far behind the window: removed before it is checked
    rest = []
    for _ in range(199):
        try:
            rest.append(next(results))
        except FileNotFoundError as error:
            rest.append(error)
    assert isinstance(first, sondara.Result)
    assert isinstance(rest[149], FileNotFoundError) and rest[149].filename == str(paths[150])
    assert all(isinstance(r, sondara.Result) for i, r in enumerate(rest) if i != 149)
    with pytest.raises(StopIteration):
        next(results)

    odd = [SAMPLE, tmp_path / "gone.wav", tmp_path, 12, SAMPLE]
    given = list(sondara.check_many(odd, errors="return"))
    assert [type(item) for item in given] == [
        sondara.Result, FileNotFoundError, IsADirectoryError, TypeError, sondara.Result]


def test_levels_are_the_checkers(tmp_path):
    for loudness in (False, True):
        options = ["--levels", "--json"] + (["--loudness"] if loudness else [])
        expected = json.loads(checker_json(*options, SAMPLE))[0]
        assert sondara.levels(SAMPLE, loudness=loudness).to_dict() == expected
        held = sondara.levels(SAMPLE.read_bytes(), loudness)
        assert held.to_dict() == dict(expected, path="<bytes>")
        assert (held.loudness is not None) == loudness
    assert sondara.loudness(SAMPLE).to_dict() == expected
    measured = sondara.levels(SAMPLE)
    assert (measured.frames, measured.sample_rate, measured.bits, len(measured.channels)) == (4410, 44100, 16, 2)
    truncated = SOURCE / "samples" / "truncated.wav"
    with pytest.raises(sondara.LevelsError) as refused:
        sondara.levels(truncated)
    assert refused.value.reason == json.loads(checker_json("--levels", "--json", truncated))[0]["error"]


@pytest.mark.skipif(not os.environ.get("SONDARA_FAULT_SHIM"), reason="no fault shim given")
def test_a_read_error_during_the_levels_is_a_levels_error(tmp_path):
    # Audio of 8 MiB, read in requests of 4 MiB: the second fails.
    long = tmp_path / "long.wav"
    subprocess.run(["sox", "-n", "-r", "48000", "-c", "2", "-b", "16", str(long), "synth", "44", "sine", "440"],
                   check=True)
    script = "import sondara, sys\ntry:\n    sondara.levels(sys.argv[1])\nexcept sondara.LevelsError as e:\n" \
             "    print(e.reason)\n"
    environment = dict(os.environ, LD_PRELOAD=os.environ["SONDARA_FAULT_SHIM"], SONDARA_FAULT_PATH="long.wav",
                       SONDARA_FAULT_EIO_AFTER=str(6 * 1024 * 1024))
    done = subprocess.run([sys.executable, "-c", script, str(long)], env=environment, capture_output=True,
                          text=True, check=True)
    assert done.stdout.startswith("the audio could not be read after frame"), done.stdout
