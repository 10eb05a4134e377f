#!/usr/bin/env python3
"""sondara-check against tools of its own kind, on the same files.

  differential.py levels SONDARA-CHECK WORK-FOLDER
      Makes WAV files with sox (8, 16, 24 and 32-bit PCM, 32 and 64-bit
      float, plain and extensible, 1 to 8 channels, tones, noise, a DC
      offset, clipping, files longer than a read) and compares the frame
      count, and the peak and RMS of each channel from `sondara-check --json --levels` with
      `sox FILE -n stats`: they must agree within 0.01 dB, the DC offset
      within 0.0001.

  differential.py chunks SONDARA-CHECK WORK-FOLDER SAMPLE...
      Compares `sondara-check --json --chunks` with a RIFF walker written
      here from the format alone, on the samples and on files made here
      with lists, INFO entries, odd bodies and pad bytes.

Exits 1 on the first difference, saying where; prints "N passed, 0 failed".
"""
import json
import os
import struct
import subprocess
import sys


def run_json(checker, option, paths):
    result = subprocess.run([checker, "--json", option, "--"] + paths, capture_output=True, text=True)
    if result.returncode not in (0, 1):
        sys.exit(f"{option}: sondara-check exited with {result.returncode}: {result.stderr}")
    return json.loads(result.stdout)


def sox_stats(path):
    """The rows of `sox -n stats` as lists of numbers, per channel (the
    Overall column dropped when there are several channels)."""
    text = subprocess.run(["sox", path, "-n", "stats"], capture_output=True, text=True, check=True).stderr
    rows = {}
    for line in text.splitlines():
        words = line.split()
        values = []
        while words and _is_number(words[-1]):
            values.insert(0, float(words.pop()))
        if words and values:
            rows[" ".join(words)] = values[1:] if len(values) > 1 else values
    return rows


def _is_number(word):
    try:
        float(word)
        return True
    except ValueError:
        return False


def levels(checker, work):
    cases = {
        "tone-16-stereo": ["-b", "16", "-c", "2", "synth", "1.5", "sine", "440", "sine", "1000", "gain", "-3"],
        "noise-16-mono": ["-b", "16", "-c", "1", "synth", "1", "whitenoise", "gain", "-10"],
        "tone-8-mono": ["-b", "8", "-c", "1", "synth", "0.7", "sine", "300", "gain", "-1"],
        "tone-24-stereo": ["-b", "24", "-c", "2", "synth", "1", "sine", "50", "pinknoise", "gain", "-20"],
        "dc-16-mono": ["-b", "16", "-c", "1", "synth", "1", "sine", "200", "gain", "-12", "dcshift", "0.25"],
        "clipped-16-stereo": ["-b", "16", "-c", "2", "synth", "0.5", "square", "100", "sine", "100", "gain", "3"],
        "quiet-24-mono": ["-b", "24", "-c", "1", "synth", "1", "sine", "1000", "gain", "-90"],
        "tone-32-stereo": ["-b", "32", "-c", "2", "synth", "1", "sine", "440", "whitenoise", "gain", "-6"],
        "float-32-mono": ["-b", "32", "-c", "1", "-e", "float", "synth", "1", "sine", "440", "gain", "-2"],
        "float-64-stereo": ["-b", "64", "-c", "2", "-e", "float", "synth", "1", "pinknoise", "sine", "90", "gain", "-8"],
        "dc-float-32-mono": ["-b", "32", "-c", "1", "-e", "float", "synth", "1", "sine", "200", "gain", "-12", "dcshift", "0.25"],
        # More than two channels or more than 16 bits: sox writes an
        # extensible format chunk.
        "tone-16-six": ["-b", "16", "-c", "6", "synth", "1", "sine", "440", "sine", "550", "pinknoise", "gain", "-9"],
        "tone-24-eight": ["-b", "24", "-c", "8", "synth", "0.5", "sine", "300", "whitenoise", "gain", "-4"],
        "float-32-three": ["-b", "32", "-c", "3", "-e", "float", "synth", "0.5", "sine", "300", "gain", "-1"],
        # Longer than one read of the audio (4 MiB), with frames that the
        # reads cut in two, and long enough for both threads.
        "long-16-stereo": ["-b", "16", "-c", "2", "synth", "30", "sine", "440", "whitenoise", "gain", "-6"],
        "long-24-stereo": ["-b", "24", "-c", "2", "synth", "30", "sine", "300", "pinknoise", "gain", "-10"],
        "long-24-six": ["-b", "24", "-c", "6", "synth", "10", "sine", "440", "pinknoise", "gain", "-10"],
        "long-8-mono": ["-b", "8", "-c", "1", "synth", "120", "sine", "100", "gain", "-3"],
    }
    paths = []
    for name, arguments in cases.items():
        path = os.path.join(work, name + ".wav")
        effects = arguments.index("synth")
        subprocess.run(["sox", "-V1", "-n", "-r", "44100"] + arguments[:effects] + [path] + arguments[effects:],
                       check=True)
        paths.append(path)
    # ffmpeg writes float in an extensible format chunk, of any channels.
    extensible = os.path.join(work, "float-32-three-extensible.wav")
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-i", os.path.join(work, "float-32-three.wav"),
                    "-c:a", "pcm_f32le", extensible], check=True)
    paths.append(extensible)
    compared = over_full_scale(checker, work)
    for entry in run_json(checker, "--levels", paths):
        path = entry["path"]
        if "error" in entry:
            sys.exit(f"{path}: sondara-check: {entry['error']}")
        stats = sox_stats(path)
        frames = int(subprocess.run(["soxi", "-s", path], capture_output=True, text=True, check=True).stdout)
        if entry["frames"] != frames:
            sys.exit(f"{path}: {entry['frames']} frames against sox's {frames}")
        for channel, levels in enumerate(entry["channels"]):
            for key, row, tolerance in (("peak", "Pk lev dB", 0.01), ("rms", "RMS lev dB", 0.01),
                                        ("dcOffset", "DC offset", 0.0001)):
                ours, theirs = levels[key], stats[row][channel]
                if abs(ours - theirs) > tolerance:
                    sys.exit(f"{path}: channel {channel + 1}: {key} {ours} against sox's {theirs}")
                compared += 1
    return compared


def over_full_scale(checker, work):
    """Float samples beyond 1.0, which sox clips when it writes: a file
    written here, its figures worked out here."""
    samples = [0.5, -1.5, 1.0, 2.0, -0.25, -1.0, 0.0, 1.25]
    fmt = struct.pack("<HHIIHH", 3, 1, 8000, 32000, 4, 32)
    data = struct.pack("<%df" % len(samples), *samples)
    body = b"WAVE" + b"fmt " + struct.pack("<I", len(fmt)) + fmt + b"data" + struct.pack("<I", len(data)) + data
    path = os.path.join(work, "over-full-scale.wav")
    with open(path, "wb") as out:
        out.write(b"RIFF" + struct.pack("<I", len(body)) + body)
    entry = run_json(checker, "--levels", [path])[0]
    channel = entry["channels"][0]
    import math
    expected = {"peak": round(20 * math.log10(2.0), 4),
                "rms": round(10 * math.log10(sum(v * v for v in samples) / len(samples)), 4),
                "dcOffset": round(sum(samples) / len(samples), 6), "fullScale": 5, "overFullScale": 3}
    for key, value in expected.items():
        if abs(channel[key] - value) > 1e-9:
            sys.exit(f"{path}: {key} {channel[key]}, worked out {value}")
    return len(expected)


def walk(data, start, end, depth, out):
    """Chunks from start to end: id, size, body, a pad byte behind an odd
    body. RIFF holds a form type and chunks, LIST a type and, for INFO,
    entries of the same shape."""
    position = start
    while position + 8 <= end:
        chunk_id = data[position:position + 4]
        size, = struct.unpack_from("<I", data, position + 4)
        entry = {"depth": depth, "offset": position, "id": chunk_id.decode("latin-1"), "size": size}
        body_end = min(position + 8 + size, len(data))
        if chunk_id == b"RIFF" and body_end >= position + 12:
            entry["form"] = data[position + 8:position + 12].decode("latin-1")
            out.append(entry)
            walk(data, position + 12, body_end, depth + 1, out)
        elif chunk_id == b"LIST" and body_end >= position + 12:
            list_type = data[position + 8:position + 12]
            entry["list"] = list_type.decode("latin-1")
            if list_type == b"INFO":
                entry["info"] = {}
                inner = position + 12
                while inner + 8 <= body_end:
                    length, = struct.unpack_from("<I", data, inner + 4)
                    text = data[inner + 8:inner + 8 + length].decode("latin-1")
                    entry["info"][data[inner:inner + 4].decode("latin-1")] = text
                    inner += 8 + length + (length & 1)
            out.append(entry)
        else:
            out.append(entry)
        position += 8 + size + (size & 1)


def chunk_file(chunk_id, body):
    return chunk_id + struct.pack("<I", len(body)) + body + (b"\0" if len(body) % 2 else b"")


def chunks(checker, work, samples):
    fmt = chunk_file(b"fmt ", struct.pack("<HHIIHH", 1, 2, 44100, 176400, 4, 16))
    info = chunk_file(b"INAM", b"take\0") + chunk_file(b"IART", b"someone")
    made = {
        "list-info": fmt + chunk_file(b"LIST", b"INFO" + info) + chunk_file(b"data", bytes(400)),
        "odd-bodies": chunk_file(b"odd ", b"xyz") + fmt + chunk_file(b"bext", bytes(603)) + chunk_file(b"data", bytes(12)),
        "list-adtl": fmt + chunk_file(b"LIST", b"adtl" + chunk_file(b"labl", b"\1\0\0\0one\0")) + chunk_file(b"data", bytes(4000)),
        "large-junk": chunk_file(b"JUNK", bytes(5000)) + fmt + chunk_file(b"data", bytes(8)),
    }
    paths = list(samples)
    for name, children in made.items():
        path = os.path.join(work, name + ".wav")
        with open(path, "wb") as file:
            file.write(b"RIFF" + struct.pack("<I", len(children) + 4) + b"WAVE" + children)
        paths.append(path)
    compared = 0
    for entry in run_json(checker, "--chunks", paths):
        with open(entry["path"], "rb") as file:
            data = file.read()
        expected = []
        walk(data, 0, len(data), 0, expected)
        ours = [{key: chunk[key] for key in ("depth", "offset", "id", "size", "form", "list", "info") if key in chunk}
                for chunk in entry["chunks"]]
        if ours != expected:
            sys.exit(f"{entry['path']}: sondara-check lists\n  {ours}\nthe walker\n  {expected}")
        compared += len(ours)
    return compared


def main():
    mode, checker, work = sys.argv[1:4]
    os.makedirs(work, exist_ok=True)
    compared = levels(checker, work) if mode == "levels" else chunks(checker, work, sys.argv[4:])
    print(f"{mode}: {compared} values agree")
    print(f"{compared} passed, 0 failed")


if __name__ == "__main__":
    main()
