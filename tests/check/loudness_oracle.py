#!/usr/bin/env python3
"""sondara-check --loudness against libebur128 on the same audio.

  loudness_oracle.py SONDARA-CHECK EBUR128-ORACLE WORK-FOLDER SAMPLE...

Makes files with sox (8 to 32-bit PCM, float, 1 to 8 channels, tones,
pink noise, music-like level changes; 44.1, 48 and 96 kHz) and one of
white noise at full scale, whose true peaks lie far above its samples and
depend most on the interpolation filter and takes the
samples given; for each, compares the integrated loudness, the loudness
range and each channel's true peak from `sondara-check --json --loudness`
with libebur128's (fed the same samples as floats by sox): within 0.1 LU
and 0.1 dB. Prints the count; exits 1 on the first difference.
"""
import json
import os
import random
import struct
import subprocess
import sys

CASES = {
    "tone-16-stereo-48k": ["-r", "48000", "-b", "16", "-c", "2", "synth", "12", "sine", "440", "sine", "1000", "gain", "-12"],
    "noise-24-mono-44k": ["-r", "44100", "-b", "24", "-c", "1", "synth", "12", "pinknoise", "gain", "-20"],
    "steps-16-stereo-44k": ["-r", "44100", "-b", "16", "-c", "2", "synth", "16", "sine", "300", "tremolo", "0.2", "90"],
    "float-32-six-48k": ["-r", "48000", "-b", "32", "-e", "float", "-c", "6", "synth", "10", "pinknoise", "gain", "-15"],
    "pcm-32-eight-48k": ["-r", "48000", "-b", "32", "-c", "8", "synth", "10", "pinknoise", "gain", "-25"],
    "float-64-stereo-44k": ["-r", "44100", "-b", "64", "-e", "float", "-c", "2", "synth", "10", "sine", "200", "sine", "3000", "gain", "-9"],
    "u8-mono-22k": ["-r", "22050", "-b", "8", "-c", "1", "synth", "10", "sine", "700", "gain", "-6"],
    "peaks-24-stereo-96k": ["-r", "96000", "-b", "24", "-c", "2", "synth", "8", "square", "5000", "gain", "-3"],
}


def bs1770_weights(path, channels):
    """BS.1770's weights of the file's channels, by its channel mask where
    the format has one: LFE 0, surround channels 1.41, all others 1."""
    data = open(path, "rb").read(4096)
    position, mask = 12, 0
    while position + 8 <= len(data):
        size = struct.unpack_from("<I", data, position + 4)[0]
        if data[position:position + 4] == b"fmt " and size >= 40 and struct.unpack_from("<H", data, position + 8)[0] == 0xFFFE:
            mask = struct.unpack_from("<I", data, position + 8 + 20)[0]
        position += 8 + size + size % 2
    if not mask:
        return ["1", "1", "1", "0", "1.41", "1.41"] if channels == 6 else ["1"] * channels
    weights = []
    for bit in range(32):
        if mask & (1 << bit) and len(weights) < channels:
            weights.append("0" if bit == 3 else "1.41" if (1 << bit) & 0x730 else "1")
    return weights + ["1"] * (channels - len(weights))


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    checker, oracle, work = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2]), sys.argv[3]
    os.makedirs(work, exist_ok=True)
    paths = list(sys.argv[4:])
    # Every 16-bit value as likely as any other, the same bytes each run.
    white = os.path.join(work, "white-16-stereo-44k.wav")
    audio = random.Random(1770).randbytes(44100 * 4 * 8)
    with open(white, "wb") as out:
        out.write(b"RIFF" + struct.pack("<I", 36 + len(audio)) + b"WAVEfmt " +
                  struct.pack("<IHHIIHH", 16, 1, 2, 44100, 176400, 4, 16) + b"data" + struct.pack("<I", len(audio)) + audio)
    paths.append(white)
    for name, arguments in CASES.items():
        path = os.path.join(work, name + ".wav")
        effects = arguments.index("synth")
        subprocess.run(["sox", "-V1", "-R", "-n"] + arguments[:effects] + [path] + arguments[effects:], check=True)
        paths.append(path)
    compared = 0
    for path in paths:
        result = subprocess.run([checker, "--json", "--loudness", "--", path], capture_output=True, text=True)
        entry = json.loads(result.stdout)[0]
        if "error" in entry:
            continue
        ours = entry["loudness"]
        channels = len(entry["channels"])
        weights = bs1770_weights(path, channels)
        raw = subprocess.run(["sox", "-V1", path, "-t", "raw", "-e", "float", "-b", "32", "-"], capture_output=True,
                             check=True).stdout
        if not raw:
            continue  # a header sox can't read (an unfinished recording)
        theirs = subprocess.run([oracle, str(entry["sampleRate"]), str(channels)] + weights, input=raw,
                                capture_output=True, check=True).stdout.split()
        integrated, loudness_range = float(theirs[0]), float(theirs[1])
        peaks = [float(value) for value in theirs[2:]]
        if ours["integrated"] is not None and abs(ours["integrated"] - integrated) > 0.1:
            sys.exit(f"{path}: integrated {ours['integrated']} against libebur128's {integrated}")
        if abs(ours["range"] - loudness_range) > 0.1 + 0.01:
            sys.exit(f"{path}: range {ours['range']} against libebur128's {loudness_range}")
        for channel, (mine, reference) in enumerate(zip(ours["truePeak"], peaks)):
            if mine is not None and abs(mine - reference) > 0.1:
                sys.exit(f"{path}: channel {channel + 1}: true peak {mine} against libebur128's {reference}")
        compared += 1
    print(f"{compared} files: integrated loudness, range and true peaks agree with libebur128")


if __name__ == "__main__":
    main()
