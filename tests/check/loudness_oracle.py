#!/usr/bin/env python3
"""sondara-check --loudness against libebur128 on the same audio.

  loudness_oracle.py SONDARA-CHECK EBUR128-ORACLE WORK-FOLDER SAMPLE...

Makes files with sox (8 to 32-bit PCM, float, 1 to 8 channels, 5.1 with
back and with side channels, 7.1 with its back pair loudest, tones, pink
noise, music-like level changes; 22.05 to 96 kHz) and one of white noise at
full scale, whose true peaks lie far above its samples and depend most on
the interpolation filter, and takes the samples given; for each, compares
the integrated loudness, the loudness range and each channel's true peak
from `sondara-check --json --loudness` with libebur128's (fed the same
samples as floats by sox, each channel placed by libebur128's own names for
the loudspeaker its channel mask gives): within 0.1 LU and 0.1 dB. A made
file must give figures, never an error or none; a sample may be refused.
Prints the count; exits 1 on the first difference, or when fewer files than
were made were compared.
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
    # 7.1 (L R C LFE BL BR SL SR) with the back pair 20 dB above the rest,
    # where its weight decides the figure.
    "seven-one-24-48k": ["-r", "48000", "-b", "24", "-c", "8", "synth", "10", "pinknoise", "gain", "-20",
                         "channels", "8", "remix", "1v0.1", "2v0.1", "3v0.1", "4v0.1", "5", "6", "7v0.1", "8v0.1"],
    # 5.1 with side channels instead of back ones, the surround pair loudest.
    "five-one-side-16-48k": ["-r", "48000", "-b", "16", "-c", "6", "synth", "10", "pinknoise", "gain", "-20",
                             "channels", "6", "remix", "1v0.1", "2v0.1", "3v0.1", "4v0.1", "5", "6"],
}
# Channel masks written over what sox chose, for the cases that need one.
MASKS = {"seven-one-24-48k": 0x63F, "five-one-side-16-48k": 0x60F}

# libebur128's names of the loudspeakers of a WAVE channel mask, bit by
# bit. Back left and right are the surround pair (at 110 degrees) unless
# side channels are present too, as in 7.1, where they sit at 135 degrees.
SPEAKERS = {
    0x1: "LEFT", 0x2: "RIGHT", 0x4: "CENTER", 0x8: "UNUSED", 0x40: "Mp030", 0x80: "Mm030", 0x100: "Mp180",
    0x200: "Mp090", 0x400: "Mm090", 0x800: "Tp000", 0x1000: "Up030", 0x2000: "Up000", 0x4000: "Um030",
    0x8000: "Up135", 0x10000: "Up180", 0x20000: "Um135",
}


def format_chunk(data):
    """The position of the fmt chunk's body and its size, or None."""
    position = 12
    while position + 8 <= len(data):
        size = struct.unpack_from("<I", data, position + 4)[0]
        if data[position:position + 4] == b"fmt ":
            return position + 8, size
        position += 8 + size + size % 2
    return None


def set_mask(path, mask):
    with open(path, "r+b") as wave:
        body, size = format_chunk(wave.read(4096))
        if size < 40:
            sys.exit(f"{path}: no extensible format to give a channel mask")
        wave.seek(body + 20)
        wave.write(struct.pack("<I", mask))


def positions(path, channels):
    """libebur128's channel names for the file's channels, by its channel
    mask where the format has one; without one, 5.1 in its usual order for
    six channels, else loudspeakers of weight 1."""
    data = open(path, "rb").read(4096)
    mask = 0
    found = format_chunk(data)
    if found and found[1] >= 40 and struct.unpack_from("<H", data, found[0])[0] == 0xFFFE:
        mask = struct.unpack_from("<I", data, found[0] + 20)[0]
    if not mask:
        if channels == 6:
            return ["LEFT", "RIGHT", "CENTER", "UNUSED", "LEFT_SURROUND", "RIGHT_SURROUND"]
        return (["CENTER"] if channels == 1 else ["LEFT", "RIGHT"] + ["CENTER"] * (channels - 2))[:channels]
    sides = mask & 0x600
    speakers = {**SPEAKERS, 0x10: "Mp135" if sides else "LEFT_SURROUND", 0x20: "Mm135" if sides else "RIGHT_SURROUND"}
    names = [speakers.get(1 << bit, "CENTER") for bit in range(32) if mask & (1 << bit)][:channels]
    return names + ["CENTER"] * (channels - len(names))


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
    made = {white}
    for name, arguments in CASES.items():
        path = os.path.join(work, name + ".wav")
        effects = arguments.index("synth")
        subprocess.run(["sox", "-V1", "-R", "-n"] + arguments[:effects] + [path] + arguments[effects:], check=True)
        if name in MASKS:
            set_mask(path, MASKS[name])
        paths.append(path)
        made.add(path)
    compared = made_compared = 0
    for path in paths:
        ours_made = path in made

        def refuse(why):
            if ours_made:
                sys.exit(f"{path}: {why}")

        result = subprocess.run([checker, "--json", "--loudness", "--", path], capture_output=True, text=True)
        entry = json.loads(result.stdout)[0]
        if "error" in entry:
            refuse(f"refused by sondara-check: {entry['error']}")
            continue
        ours = entry["loudness"]
        if ours["integrated"] is None or None in ours["truePeak"]:
            refuse(f"sondara-check gives no figure: {ours}")
        channels = len(entry["channels"])
        raw = subprocess.run(["sox", "-V1", path, "-t", "raw", "-e", "float", "-b", "32", "-"], capture_output=True,
                             check=True).stdout
        if not raw:
            refuse("sox reads no audio")
            continue  # a header sox can't read (an unfinished recording)
        oracle_run = subprocess.run([oracle, str(entry["sampleRate"]), str(channels)] + positions(path, channels),
                                    input=raw, capture_output=True)
        if oracle_run.returncode != 0:
            sys.exit(f"{path}: libebur128: {oracle_run.stderr.decode(errors='replace').strip()}")
        theirs = oracle_run.stdout.split()
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
        made_compared += ours_made
    if made_compared != len(made):
        sys.exit(f"{made_compared} of the {len(made)} files made were compared")
    print(f"{compared} files ({made_compared} made, {compared - made_compared} samples): integrated loudness, "
          "range and true peaks agree with libebur128")


if __name__ == "__main__":
    main()
