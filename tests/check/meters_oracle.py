#!/usr/bin/env python3
"""sondara-check --levels' silence, clipping runs, noise floor and stereo
pairs against answers known by construction, against the same figures
worked out here from the samples, and against ffmpeg where it measures the
same thing; and its two warnings of the audio, file by file.

  meters_oracle.py SONDARA-CHECK WORK-FOLDER

The files are made here with struct and random (the same bytes each run):
  - a tone with 0.7 s of digital silence before it and 2.3 s of -70 dBFS
    noise after it: lead and tail to the frame, against 0.7 s and 2.3 s
    within 1 ms and against ffmpeg's silencedetect within 1 ms; its noise
    floor within 0.3 dB of -70 dBFS;
  - a sine clipped at 0.8 of full scale and normalised to 0.9, in every
    sample kind: the runs at the peak to the last one (two a cycle), none at
    full scale, and the runs of any length against those of ffmpeg's astats
    (its peak count over its flat factor), within 0.01;
  - stereo pairs, one channel inverted, dual mono, half and half, partly
    correlated and uncorrelated: the correlation and its lowest over 0.4 s
    blocks within 2e-6 of this script's sums, dual mono and inverse exactly,
    and against ffmpeg's aphasemeter over the same 0.4 s blocks within 1e-3
    where both are ±1, both within 0.05 of 0 for uncorrelated noise;
  - noise at -50 dBFS RMS under a programme 38 dB louder: the noise floor
    within 0.3 dB of -50 dBFS, within 0.001 dB of this script's quietest
    window, and within 0.01 dB of the same windows built from ffmpeg's RMS
    of each 0.1 s step (astats).
Prints the count of comparisons; exits 1 on the first that fails.
"""
import json
import math
import os
import random
import re
import struct
import subprocess
import sys

RATE = 44100
THRESHOLD = 10 ** (-60 / 20)
# Sample kinds: format tag, bits, struct code, full scale.
KINDS = {
    "u8": (1, 8, "B", 128), "s16": (1, 16, "h", 32768), "s24": (1, 24, None, 8388608),
    "s32": (1, 32, "i", 2147483648), "f32": (3, 32, "f", 1.0), "f64": (3, 64, "d", 1.0),
}
compared = 0


def fail(message):
    sys.exit("meters_oracle: " + message)


def check(condition, message):
    global compared
    compared += 1
    if not condition:
        fail(message)


def code(value, kind):
    """A fraction of full scale as the kind holds it, and as read back."""
    scale = KINDS[kind][3]
    if kind.startswith("f"):
        return struct.unpack("<" + KINDS[kind][2], struct.pack("<" + KINDS[kind][2], value))[0]
    return max(-scale, min(scale - 1, int(round(value * scale))))


def write_wave(path, channels, kind="s16", rate=RATE):
    """channels: lists of fractions of full scale, one list a channel.
    Returns the samples as the file holds them, as fractions."""
    tag, bits, form, scale = KINDS[kind]
    frames = len(channels[0])
    held = [[code(v, kind) for v in channel] for channel in channels]
    data = bytearray()
    for f in range(frames):
        for channel in held:
            v = channel[f]
            if kind == "u8":
                data.append(v + 128)
            elif kind == "s24":
                data += struct.pack("<i", v)[:3]
            else:
                data += struct.pack("<" + form, v)
    align = len(channels) * bits // 8
    header = struct.pack("<HHIIHH", tag, len(channels), rate, rate * align, align, bits)
    with open(path, "wb") as out:
        out.write(b"RIFF" + struct.pack("<I", 4 + 8 + len(header) + 8 + len(data)) + b"WAVEfmt " +
                  struct.pack("<I", len(header)) + header + b"data" + struct.pack("<I", len(data)) + data)
    return [[v / scale for v in channel] for channel in held] if not kind.startswith("f") else held


def levels(checker, path, *options):
    result = subprocess.run([checker, "--json", "--levels", *options, "--", path], capture_output=True, text=True)
    entry = json.loads(result.stdout)[0]
    if "error" in entry:
        fail(f"{path}: refused: {entry['error']}")
    return entry


def ffmpeg_log(path, graph):
    result = subprocess.run(["ffmpeg", "-hide_banner", "-nostats", "-i", path, "-af", graph, "-f", "null", "-"],
                            capture_output=True, text=True)
    if result.returncode != 0:
        fail(f"ffmpeg failed on {path}: {result.stderr[-500:]}")
    return result.stderr + result.stdout


def ffmpeg_values(path, graph, key):
    """The values of a metadata key that ametadata prints, frame by frame."""
    text = ffmpeg_log(path, graph + f",ametadata=print:key={key}:file=-")
    return [float(v) for v in re.findall(re.escape(key) + r"=(\S+)", text)]


def uniform_noise(rng, rms, count):
    half = rms * math.sqrt(3)
    return [rng.uniform(-half, half) for _ in range(count)]


def sine(frequency, amplitude, count):
    return [amplitude * math.sin(2 * math.pi * frequency * i / RATE) for i in range(count)]


def frames_of(seconds):
    return round(seconds * RATE)


def quietest_window(samples, step=4410, steps=5):
    """The RMS of the quietest window of steps steps, a window every step,
    windows of nothing but zeros passed over; None when there is none."""
    sums = [sum(v * v for v in samples[s:s + step]) for s in range(0, len(samples) - step + 1, step)]
    sound = [any(samples[s:s + step]) for s in range(0, len(samples) - step + 1, step)]
    windows = [sum(sums[w:w + steps]) for w in range(len(sums) - steps + 1) if any(sound[w:w + steps])]
    return math.sqrt(min(windows) / (step * steps)) if windows else None


def db(fraction):
    return 20 * math.log10(fraction)


def silence_lead_tail(checker, work):
    rng = random.Random(70)
    samples = [0.0] * frames_of(0.7) + sine(440, 0.5, frames_of(1.0)) + uniform_noise(rng, 10 ** (-70 / 20), frames_of(2.3))
    path = os.path.join(work, "tone-lead-tail.wav")
    held = write_wave(path, [samples])[0]
    ours = levels(checker, path)["channels"][0]
    silence = ours["silence"]
    # Here: the first and the last sample at or above the threshold.
    sounding = [i for i, v in enumerate(held) if abs(v) >= THRESHOLD]
    lead, tail = sounding[0], len(held) - 1 - sounding[-1]
    check(round(silence["lead"] * RATE) == lead, f"lead {silence['lead']} s, here {lead} frames")
    check(round(silence["tail"] * RATE) == tail, f"tail {silence['tail']} s, here {tail} frames")
    check(abs(silence["lead"] - 0.7) < 0.001 and abs(silence["tail"] - 2.3) < 0.001, f"lead and tail {silence}")
    check(silence["runs"] == 0 and not silence["digitalZero"], f"runs inside a tone: {silence}")
    check(ours["noiseFloor"] is not None and abs(ours["noiseFloor"] + 70) < 0.3, f"noise floor {ours['noiseFloor']}")
    check(abs(ours["noiseFloor"] - db(quietest_window(held))) < 0.001, f"noise floor {ours['noiseFloor']} against here")
    # ffmpeg: silence from the start to the tone, and from its end on.
    text = ffmpeg_log(path, "silencedetect=n=-60dB:d=0.1")
    starts = [float(v) for v in re.findall(r"silence_start: (\S+)", text)]
    ends = [float(v) for v in re.findall(r"silence_end: (\S+)", text)]
    seconds = len(held) / RATE
    check(starts and ends and abs(starts[0]) < 0.001 and abs(ends[0] - silence["lead"]) < 0.001,
          f"lead {silence['lead']} against silencedetect {starts} {ends}")
    check(abs(seconds - starts[-1] - silence["tail"]) < 0.001, f"tail {silence['tail']} against silencedetect {starts}")
    # Runs inside: two gaps of 0.3 s and one of 0.05 s in a tone.
    gaps = sine(440, 0.5, frames_of(0.5)) + [0.0] * frames_of(0.3) + sine(440, 0.5, frames_of(0.5)) + \
        [0.0] * frames_of(0.05) + sine(440, 0.5, frames_of(0.5)) + [0.0] * frames_of(0.3) + sine(440, 0.5, frames_of(0.5))
    path = os.path.join(work, "tone-gaps.wav")
    held = write_wave(path, [gaps])[0]
    silence = levels(checker, path)["channels"][0]["silence"]
    sounding = [i for i, v in enumerate(held) if abs(v) >= THRESHOLD]
    runs = [(a + 1, b - a - 1) for a, b in zip(sounding, sounding[1:]) if b - a - 1 > 0]
    counted = [start for start, length in runs if length >= frames_of(0.1)]
    check(silence["runs"] == len(counted) == 2, f"runs {silence}, here {counted}")
    check([round(s * RATE) for s in silence["runStarts"]] == counted, f"run starts {silence['runStarts']}, here {counted}")
    check(round(silence["longestInside"] * RATE) == max(length for _, length in runs), f"longest {silence}")


def runs_at_peak(values, shortest):
    """Runs of equal values at the greatest magnitude: how many of at
    least shortest, and the longest."""
    peak = max(abs(v) for v in values)
    lengths, run, before = [], 0, None
    for v in values + [None]:
        if v is not None and abs(v) == peak and v == before:
            run += 1
            continue
        if run:
            lengths.append(run)
        run, before = (1, v) if v is not None and abs(v) == peak else (0, None)
    return sum(1 for length in lengths if length >= shortest), max(lengths)


def clipping_runs(checker, work):
    clipped = [max(-0.8, min(0.8, v)) / 0.8 * 0.9 for v in sine(100, 0.95, RATE)]
    for kind in KINDS:
        path = os.path.join(work, f"clipped-{kind}.wav")
        held = write_wave(path, [clipped], kind)[0]
        ours = levels(checker, path)["channels"][0]
        runs, longest = runs_at_peak(held, 3)
        check(ours["clippingRuns"] == {"runs": runs, "longest": longest}, f"{kind}: {ours['clippingRuns']}, here {runs}, {longest}")
        check(runs == 200 and ours["fullScale"] == 0, f"{kind}: {runs} runs, {ours['fullScale']} at full scale")
        if kind == "s16":
            # astats counts the samples at the least or the greatest value
            # (its peak count) and gives their ratio to the runs of them in
            # decibels (its flat factor): the runs of any length, where the
            # least and the greatest are the peak of either sign.
            any_length = levels(checker, path, "--clipping-run", "1")["channels"][0]["clippingRuns"]["runs"]
            text = ffmpeg_log(path, "astats=measure_overall=none:measure_perchannel=Peak_count+Flat_factor")
            peak_count = float(re.search(r"Peak count: (\S+)", text).group(1))
            flat_factor = float(re.search(r"Flat factor: (\S+)", text).group(1))
            theirs = peak_count / 10 ** (flat_factor / 20)
            check(abs(any_length - theirs) < 0.01 and any_length == runs_at_peak(held, 1)[0],
                  f"runs of any length {any_length}, astats {theirs}")


def correlation(left, right):
    both, ll, rr = (sum(a * b for a, b in zip(left, right)), sum(a * a for a in left), sum(b * b for b in right))
    return both / math.sqrt(ll * rr) if ll and rr else None


def stereo_pairs(checker, work):
    rng = random.Random(12)
    noise = uniform_noise(rng, 0.2, frames_of(2.0))
    other = uniform_noise(rng, 0.2, frames_of(2.0))
    cut = frames_of(1.2)
    cases = {
        "inverse": ([v for v in noise], [-v for v in noise], "s16", -1.0),
        "dual-mono": (noise, noise, "f64", 1.0),
        "half-and-half": (noise, noise[:cut] + [-v for v in noise[cut:]], "s24", -1.0),
        "partly": (noise, [0.6 * a + 0.8 * b for a, b in zip(noise, other)], "s16", None),
        "uncorrelated": (noise, other, "s16", 0.0),
    }
    block = frames_of(0.4)
    for name, (left, right, kind, ffmpeg_lowest) in cases.items():
        path = os.path.join(work, f"pair-{name}.wav")
        left, right = write_wave(path, [left, right], kind)
        pair = levels(checker, path)["pairs"][0]
        whole = correlation(left, right)
        lowest = min(correlation(left[b:b + block], right[b:b + block]) for b in range(0, len(left) - block + 1, block))
        check(abs(pair["correlation"] - whole) < 2e-6, f"{name}: correlation {pair['correlation']}, here {whole}")
        check(abs(pair["lowestBlockCorrelation"] - lowest) < 2e-6, f"{name}: lowest {pair['lowestBlockCorrelation']}, here {lowest}")
        check(pair["dualMono"] == (left == right), f"{name}: dual mono {pair['dualMono']}")
        check(pair["inverse"] == all(a == -b for a, b in zip(left, right)), f"{name}: inverse {pair['inverse']}")
        if ffmpeg_lowest is None:
            continue  # aphasemeter averages 2lr/(l²+r²) a sample: another figure
        phases = ffmpeg_values(path, f"asetnsamples=n={block}:p=0,aphasemeter=video=0", "lavfi.aphasemeter.phase")
        phases = phases[:len(left) // block]
        # Where both are ±1 the lowest blocks agree; for noise without
        # correlation, the whole file and the mean of the blocks are near 0.
        theirs = min(phases) if ffmpeg_lowest else sum(phases) / len(phases)
        ours = pair["lowestBlockCorrelation"] if ffmpeg_lowest else pair["correlation"]
        tolerance = 1e-3 if ffmpeg_lowest else 0.05
        check(abs(ours - theirs) < tolerance and abs(ours - ffmpeg_lowest) < tolerance,
              f"{name}: {ours} against aphasemeter's {theirs}")


def noise_floor(checker, work):
    rng = random.Random(50)
    noise = uniform_noise(rng, 10 ** (-50 / 20), frames_of(6.0))
    programme = [0.0] * len(noise)
    for start, end in ((0.0, 1.0), (2.5, 4.0)):
        for i in range(frames_of(start), frames_of(end)):
            programme[i] = 0.25 * math.sin(2 * math.pi * 330 * i / RATE)
    path = os.path.join(work, "noise-under-programme.wav")
    held = write_wave(path, [[a + b for a, b in zip(noise, programme)]])[0]
    ours = levels(checker, path)["channels"][0]["noiseFloor"]
    check(abs(ours + 50) < 0.3, f"noise floor {ours} against -50 dBFS")
    check(abs(ours - db(quietest_window(held))) < 0.001, f"noise floor {ours} against here {db(quietest_window(held))}")
    # ffmpeg's RMS of each 0.1 s step, made into the same windows.
    steps = ffmpeg_values(path, "asetnsamples=n=4410:p=0,astats=metadata=1:reset=1:measure_overall=none"
                                ":measure_perchannel=RMS_level", "lavfi.astats.1.RMS_level")
    powers = [10 ** (v / 10) for v in steps[:len(held) // 4410]]
    theirs = min(sum(powers[w:w + 5]) / 5 for w in range(len(powers) - 4))
    check(abs(ours - 10 * math.log10(theirs)) < 0.01, f"noise floor {ours} against astats' steps {10 * math.log10(theirs)}")


def warnings(checker, work):
    rng = random.Random(5)
    tone = sine(440, 0.5, frames_of(1.0))
    quiet = uniform_noise(rng, 10 ** (-70 / 20), frames_of(1.0))
    zeros = [0.0] * frames_of(1.0)
    table = [
        ("tone", [tone], [], []),
        ("tone-and-zero", [tone, zeros], [], ["audio.silent-channel"]),
        ("zero-and-tone", [zeros, tone], [], ["audio.silent-channel"]),
        ("zeros", [zeros, zeros], [], ["audio.silent"]),
        ("quiet", [quiet, quiet], [], ["audio.silent"]),
        ("quiet-and-zero", [quiet, zeros], [], ["audio.silent-channel", "audio.silent"]),
        ("quiet-below-a-lower-threshold", [quiet, quiet], ["--silence-threshold", "-80"], []),
    ]
    for name, channels, options, expected in table:
        path = os.path.join(work, f"warn-{name}.wav")
        write_wave(path, channels)
        found = [finding["code"] for finding in levels(checker, path, *options)["findings"]]
        check(found == expected, f"{name}: warnings {found}, expected {expected}")
        text = subprocess.run([checker, "--levels", *options, "--", path], capture_output=True, text=True).stdout
        check(text.count("注意：") == len(expected), f"{name}: text warnings in\n{text}")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    checker, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    os.makedirs(work, exist_ok=True)
    silence_lead_tail(checker, work)
    clipping_runs(checker, work)
    stereo_pairs(checker, work)
    noise_floor(checker, work)
    warnings(checker, work)
    print(f"{compared} passed, 0 failed")


if __name__ == "__main__":
    main()
