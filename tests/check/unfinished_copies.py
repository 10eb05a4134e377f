#!/usr/bin/env python3
"""Tidy copies of unfinished recordings, of every kind of file that sox and
ffmpeg write.

  unfinished_copies.py SONDARA-CHECK WORK-FOLDER

For PCM of 8 to 32 bits, float, A-law, mu-law and ADPCM, 1 to 8 channels,
plain and extensible format chunks, with and without chunks written behind
the audio (a LIST/INFO, a bext, a chunk of our own), it makes the file and
four unfinished copies of it: RIFF and data sizes set to 0, set to
0xFFFFFFFF, a RIFF size too small, and the file cut inside its audio. Each
copy is mended with --tidy, and the mended file must hold every chunk of
the original byte for byte (for the cut file: up to the cut) with the data
chunk holding exactly the whole frames of audio present, and the check
must call it sound where it calls the original sound. The inputs must be
unchanged. Prints the count; exits 1 on the first difference.
"""
import concurrent.futures
import hashlib
import json
import os
import shutil
import struct
import subprocess
import sys

TONE = ["synth", "0.05", "sine", "440"]


def originals(work):
    """The path of every original file, made side by side."""
    commands = {}
    sox = {"u8": ["-b", "8", "-e", "unsigned"], "s16": ["-b", "16"], "s24": ["-b", "24"], "s32": ["-b", "32"],
           "f32": ["-b", "32", "-e", "float"], "alaw": ["-e", "a-law"], "ulaw": ["-e", "u-law"],
           "ima": ["-e", "ima-adpcm"], "ms": ["-e", "ms-adpcm"]}
    for name, options in sox.items():
        for channels in (1, 2, 6):
            path = os.path.join(work, f"sox-{name}-{channels}.wav")
            commands[path] = ["sox", "-V1", "-n", "-r", "8000", "-c", str(channels)] + options + [path] + TONE
    lavfi = ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "sine=d=0.05"]
    for codec in ["pcm_u8", "pcm_s16le", "pcm_s24le", "pcm_s32le", "pcm_f32le", "pcm_f64le", "pcm_alaw", "adpcm_ima_wav"]:
        for channels in ((1, 2, 8) if codec.startswith("pcm") else (1, 2)):
            path = os.path.join(work, f"ff-{codec}-{channels}.wav")
            commands[path] = lavfi + ["-ac", str(channels), "-c:a", codec, path]
    for extra, options in (("info", ["-metadata", "title=Take 1", "-metadata", "artist=Someone"]),
                           ("bext", ["-write_bext", "1", "-metadata", "description=Take 1"])):
        path = os.path.join(work, f"ff-{extra}.wav")
        commands[path] = lavfi + ["-ac", "2", "-c:a", "pcm_s24le"] + options + [path]
    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        list(pool.map(lambda command: subprocess.run(command, check=True), commands.values()))
    return list(commands)


def chunks_of(data):
    """The top-level chunks of a RIFF file: (id, header position, size)."""
    out, position = [], 12
    while position + 8 <= len(data):
        chunk_id, size = data[position:position + 4], struct.unpack_from("<I", data, position + 4)[0]
        out.append((chunk_id, position, size))
        position += 8 + size + size % 2
    return out


def with_chunks_behind(data):
    """The file with every chunk that stood before the audio moved behind
    it, as recorders that write their metadata last leave it, and a chunk
    of our own of odd size behind those."""
    front, behind, audio = b"", b"", b""
    for chunk_id, position, size in chunks_of(data):
        raw = data[position:position + 8 + size + size % 2]
        if chunk_id == b"data":
            audio = raw
        elif chunk_id in (b"fmt ", b"fact"):
            front += raw
        else:
            behind += raw
    behind += b"PEAK" + struct.pack("<I", 5) + b"peaks\0"
    children = b"WAVE" + front + audio + behind
    return b"RIFF" + struct.pack("<I", len(children)) + children


def set_sizes(data, riff, data_size):
    out = bytearray(data)
    out[4:8] = struct.pack("<I", riff)
    position = next(p for chunk_id, p, _ in chunks_of(data) if chunk_id == b"data")
    out[position + 4:position + 8] = struct.pack("<I", data_size)
    return bytes(out)


def block_align(data):
    position = next(p for chunk_id, p, _ in chunks_of(data) if chunk_id == b"fmt ")
    return struct.unpack_from("<H", data, position + 8 + 12)[0]


def expected_copy(original, cut_at=None):
    """What the mended copy must be: the original's chunks, byte for byte,
    the data chunk holding the whole frames present."""
    data = original if cut_at is None else original[:cut_at]
    align = block_align(original)
    pieces = b""
    for chunk_id, position, size in chunks_of(original):
        if position + 8 > len(data):
            break
        if chunk_id == b"data":
            present = min(size, len(data) - position - 8)
            audio = data[position + 8:position + 8 + present - present % align]
            pieces += b"data" + struct.pack("<I", len(audio)) + audio + b"\0" * (len(audio) % 2)
            if present < size:
                break
        else:
            pieces += original[position:position + 8 + size + size % 2]
    return b"RIFF" + struct.pack("<I", len(pieces) + 4) + b"WAVE" + pieces


def sound_ones(checker, paths):
    """Those of the paths that the check calls sound, in one run."""
    lines = subprocess.run([checker, "--jsonl", "--"] + paths, capture_output=True, text=True).stdout.splitlines()
    results = [json.loads(line) for line in lines]
    return {result["path"] for result in results if result["type"] == "file" and not result["hasError"]}


def mend(checker, work, name, kind, data, cut_at, original):
    """Mends one unfinished copy; what is wrong with the result, or None."""
    source = os.path.join(work, f"{name}-{kind}.wav")
    copy = os.path.join(work, f"{name}-{kind}-mended.wav")
    with open(source, "wb") as out:
        out.write(data)
    before = hashlib.sha256(data).hexdigest()
    result = subprocess.run([checker, "--tidy", copy, "--", source], capture_output=True, text=True)
    if result.returncode != 0:
        return f"{source}: {result.stdout.strip()}"
    if hashlib.sha256(open(source, "rb").read()).hexdigest() != before:
        return f"{source} was changed"
    want = expected_copy(original, cut_at)
    got = open(copy, "rb").read()
    if got != want:
        return f"{copy}: {len(got)} bytes, {len(want)} expected; chunks {chunks_of(got)} against {chunks_of(want)}"
    return None


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    checker, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    jobs = []
    made = originals(work)
    sound = sound_ones(checker, made)
    if not sound:
        sys.exit("unfinished_copies: the check called none of the originals sound")
    must_be_sound = []
    for path in made:
        plain = open(path, "rb").read()
        for shape, original in (("", plain), ("-behind", with_chunks_behind(plain))):
            name = os.path.basename(path)[:-4] + shape
            data_at = next(p for chunk_id, p, _ in chunks_of(original) if chunk_id == b"data")
            cut_at = data_at + 8 + (len(original) - data_at - 8) * 2 // 3 + 1
            unfinished = {
                "zero": (set_sizes(original, 0, 0), None),
                "ones": (set_sizes(original, 0xFFFFFFFF, 0xFFFFFFFF), None),
                "riff-small": (set_sizes(original, 4, struct.unpack_from("<I", original, data_at + 4)[0]), None),
                "cut": (original[:cut_at], cut_at),
            }
            for kind, (data, cut) in unfinished.items():
                if kind == "cut" and cut >= len(plain) - 8:
                    continue
                jobs.append((checker, work, name, kind, data, cut, original))
                if path in sound:
                    must_be_sound.append(os.path.join(work, f"{name}-{kind}-mended.wav"))
    # Each copy is mended by a checker of its own; they run side by side.
    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        faults = list(pool.map(lambda job: mend(*job), jobs))
    for fault in faults:
        if fault:
            sys.exit(f"unfinished_copies: {fault}")
    not_sound = sorted(set(must_be_sound) - sound_ones(checker, must_be_sound))
    if not_sound:
        sys.exit(f"unfinished_copies: mended from sound files, yet not sound: {not_sound}")
    leftovers = [name for name in os.listdir(work) if name.endswith(".sondara-check-unfinished")]
    if leftovers:
        sys.exit(f"unfinished_copies: left behind: {leftovers}")
    print(f"{len(jobs)} unfinished copies mended, each with its chunks byte for byte and its whole frames;"
          f" the {len(must_be_sound)} of sound originals sound")


if __name__ == "__main__":
    main()
