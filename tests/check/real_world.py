#!/usr/bin/env python3
"""The checker's warnings on the kinds of WAV file that sox and ffmpeg write.

  real_world.py SONDARA-CHECK WORK-FOLDER

Makes every kind in WORK-FOLDER (PCM of 8 to 32 bits, float, A-law, mu-law,
ADPCM, GSM, 1 to 8 channels, LIST/INFO, bext, RF64, and output written to a
pipe, whose header sizes stay placeholders), checks the folder with --jsonl,
and fails unless each file has exactly the warnings that are true of it, as
its own bytes tell: placeholder sizes for piped output with the figures of
the file, RF64 for RF64, and an extensible format that is not PCM where the
format chunk says so. Every other kind is a well-formed file and must give
no warning at all. The header facts of each file must be those ffprobe
reads: format tag (an extensible format's through its sub-format), rate,
channels, bits and frames (none for a compressed format, whose blocks are
not frames).
"""
import json
import os
import shutil
import struct
import subprocess
import sys

TONE = ["synth", "0.05", "sine", "440"]


def make_files(work):
    """The kinds, as (name, command) pairs; a command with a pipe is a list
    of two."""
    kinds = []
    sox_encodings = {
        "u8": ["-b", "8", "-e", "unsigned"], "s16": ["-b", "16", "-e", "signed"],
        "s24": ["-b", "24", "-e", "signed"], "s32": ["-b", "32", "-e", "signed"],
        "f32": ["-b", "32", "-e", "float"], "f64": ["-b", "64", "-e", "float"],
        "alaw": ["-e", "a-law"], "ulaw": ["-e", "u-law"], "ima": ["-e", "ima-adpcm"],
        "ms": ["-e", "ms-adpcm"], "gsm": ["-e", "gsm-full-rate"],
    }
    for name, options in sox_encodings.items():
        for channels in (1, 2, 6):
            if name == "gsm" and channels != 1:
                continue
            kinds.append((f"sox-{name}-{channels}.wav",
                          ["sox", "-n", "-r", "8000", "-c", str(channels)] + options + ["OUT"] + TONE))
    for codec in ["pcm_u8", "pcm_s16le", "pcm_s24le", "pcm_s32le", "pcm_f32le", "pcm_f64le", "pcm_alaw", "pcm_mulaw",
                  "adpcm_ima_wav", "adpcm_ms"]:
        for channels in (1, 2, 8) if codec.startswith("pcm") else (1, 2):
            kinds.append((f"ff-{codec}-{channels}.wav", ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.05",
                                                         "-ac", str(channels), "-c:a", codec, "OUT"]))
    ffmpeg_pcm = ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.05", "-c:a", "pcm_s16le"]
    kinds += [
        ("ff-rf64.wav", ffmpeg_pcm + ["-rf64", "always", "OUT"]),
        ("ff-bext.wav", ffmpeg_pcm + ["-write_bext", "1", "-metadata", "title=Take 1", "OUT"]),
        ("ff-info.wav", ffmpeg_pcm + ["-metadata", "title=Take 1", "-metadata", "artist=Someone", "OUT"]),
        ("ff-piped.wav", ffmpeg_pcm + ["-f", "wav", "-"]),
        ("ff-piped-s24-6.wav", ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.05", "-ac", "6",
                                "-c:a", "pcm_s24le", "-f", "wav", "-"]),
        ("sox-piped.wav", ["sox", "-n", "-r", "44100", "-c", "2", "-b", "16", "-t", "wav", "-"] + TONE),
    ]
    for name, command in kinds:
        path = os.path.join(work, name)
        if "OUT" in command:
            subprocess.run([path if part == "OUT" else part for part in command], check=True,
                           stderr=subprocess.DEVNULL)
        else:
            # Through a pipe, so that the writer can't go back to its header.
            with open(path, "wb") as out:
                writer = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
                shutil.copyfileobj(writer.stdout, out)
                if writer.wait() != 0:
                    sys.exit(f"real_world: {name} could not be made")
    return [name for name, _ in kinds]


def true_warnings(path):
    """What is true of the file, from its bytes: (code, declared, actual,
    offset) of each warning it deserves."""
    data = open(path, "rb").read()
    size = len(data)
    if data[:4] == b"RF64":
        return [("container.rf64", None, None, 0)]
    warnings = []
    riff_size = struct.unpack_from("<I", data, 4)[0]
    position = 12
    formats = []
    while position + 8 <= size:
        chunk_id, chunk_size = data[position:position + 4], struct.unpack_from("<I", data, position + 4)[0]
        if chunk_id == b"fmt ":
            formats.append(position)
            tag = struct.unpack_from("<H", data, position + 8)[0]
            if tag == 0xFFFE and struct.unpack_from("<H", data, position + 8 + 24)[0] != 1:
                warnings.append(("format.extensible-not-pcm", None, None, position))
        if chunk_id == b"data":
            present = size - position - 8
            if position + 8 + chunk_size > size:
                # Only what a pipe leaves: the sizes of a writer that could
                # not go back.
                assert chunk_size in (0xFFFFFFFF, 0x7FFFF000), path
                warnings.insert(0, ("riff.size-placeholder", riff_size, size - 8, 0))
                warnings.append(("data.size-placeholder", chunk_size, present, position))
                break
        position += 8 + chunk_size + chunk_size % 2
    return warnings


def facts_disagreement(path, facts):
    """Where the checker's header facts differ from ffprobe's, or None; None
    too for the few kinds ffprobe can't read (6-channel IMA ADPCM)."""
    probe = subprocess.run(["ffprobe", "-v", "error", "-show_streams", "-of", "json", path],
                           capture_output=True, check=False)
    if probe.returncode != 0:
        return None
    stream = json.loads(probe.stdout)["streams"][0]
    tag = facts["formatTag"]
    if tag == 0xFFFE:
        tag = int(facts["subFormat"][:8], 16)
    compressed = stream["codec_name"].startswith(("adpcm", "gsm"))
    mine = (tag, facts["sampleRate"], facts["channels"], facts["bits"], facts["frames"])
    theirs = (int(stream["codec_tag"], 16), int(stream["sample_rate"]), stream["channels"],
              stream.get("bits_per_sample"), None if compressed else stream.get("duration_ts"))
    seconds = None if mine[4] is None else round(mine[4] / mine[1], 6)
    if mine != theirs or facts["seconds"] != seconds:
        return f"facts {mine}, {facts['seconds']} s; ffprobe {theirs}"
    return None


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    checker, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    names = make_files(work)
    result = subprocess.run([checker, "--jsonl", work], capture_output=True, check=False)
    if result.returncode not in (0, 1):
        sys.exit(f"real_world: the checker exited with {result.returncode}: {result.stderr.decode()}")
    seen = {}
    facts = {}
    for line in result.stdout.decode().splitlines():
        entry = json.loads(line)
        if entry["type"] == "file":
            facts[os.path.basename(entry["path"])] = entry["format"]
            seen[os.path.basename(entry["path"])] = [
                (f["code"], f.get("declared"), f.get("actual"), f.get("offset"))
                for f in entry["findings"] if f["severity"] == "warning"]
    failures = []
    fired = {}
    for name in names:
        expected = true_warnings(os.path.join(work, name))
        if seen.get(name) != expected:
            failures.append(f"{name}: warned {seen.get(name)}, true of it {expected}")
        disagreement = facts_disagreement(os.path.join(work, name), facts.get(name))
        if disagreement:
            failures.append(f"{name}: {disagreement}")
        for code, *_ in expected:
            fired.setdefault(code, []).append(name)
    if len(names) < 48:
        failures.append(f"only {len(names)} kinds of file made")
    if failures:
        sys.exit("real_world: warnings or facts that aren't what is true of the file:\n  " + "\n  ".join(failures))
    print(f"{len(names)} kinds of file, each with exactly its true warnings and ffprobe's header facts:")
    for code, files in sorted(fired.items()):
        print(f"  {code}: {', '.join(files)}")


if __name__ == "__main__":
    main()
