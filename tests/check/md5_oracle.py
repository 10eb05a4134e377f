#!/usr/bin/env python3
"""--md5 against Python's hashlib, over the bytes of the data chunk that
this script finds with a walker of its own.

  md5_oracle.py SONDARA-CHECK WORK-FOLDER

RIFF and RF64 files (the data size from ds64), whole frames and data of a
size that is no multiple of the frame (a last partial frame, an odd size
with its pad byte), one read long and several: the MD5 of --md5 alone and
of --levels --md5, in text and JSON, is the oracle's. Then the comparison
with a stored MD5 chunk (match, mismatch, none stored, a chunk of the wrong
size) and its exit status, the hash that --chunks shows, a copy made with
--tidy --md5 that verifies, and a data chunk cut short by the end of the
file, which has no MD5. Prints the count; exits 1 on the first difference.
"""
import hashlib
import json
import os
import struct
import subprocess
import sys

checker, work = sys.argv[1], sys.argv[2]
os.makedirs(work, exist_ok=True)
checked = 0


def fail(message):
    print("md5_oracle: " + message)
    sys.exit(1)


def noise(count, seed):
    """count bytes that no pattern repeats within a read."""
    out, block = bytearray(), seed.to_bytes(8, "little")
    while len(out) < count:
        block = hashlib.sha256(block).digest()
        out += block * 64
    return bytes(out[:count])


def format_chunk(channels, bits):
    align = channels * bits // 8
    return b"fmt " + struct.pack("<IHHIIHH", 16, 1, channels, 48000, 48000 * align, align, bits)


def riff(data, channels, bits, extra=b""):
    body = b"WAVE" + format_chunk(channels, bits) + b"data" + struct.pack("<I", len(data)) + data
    body += b"\0" * (len(data) % 2) + extra
    return b"RIFF" + struct.pack("<I", len(body)) + body


def rf64(data, channels, bits, extra=b""):
    """An RF64 file whose data and RIFF sizes stand in its ds64 chunk."""
    tail = format_chunk(channels, bits) + b"data" + struct.pack("<I", 0xFFFFFFFF) + data
    tail += b"\0" * (len(data) % 2) + extra
    riff_size = 4 + 36 + len(tail)
    ds64 = b"ds64" + struct.pack("<IQQQI", 28, riff_size, len(data), len(data) // (channels * bits // 8), 0)
    return b"RF64" + struct.pack("<I", 0xFFFFFFFF) + b"WAVE" + ds64 + tail


def data_of(file):
    """The data chunk's body, found by this script's own walk."""
    sizes = {}
    position = 12
    while position + 8 <= len(file):
        chunk_id, size = file[position:position + 4], struct.unpack_from("<I", file, position + 4)[0]
        if chunk_id == b"ds64":
            sizes[b"data"] = struct.unpack_from("<Q", file, position + 16)[0]
        if chunk_id == b"data":
            size = sizes.get(b"data", size) if size == 0xFFFFFFFF else size
            return file[position + 8:position + 8 + size]
        position += 8 + size + size % 2
    fail("no data chunk")


def run(*arguments, status=0):
    global checked
    done = subprocess.run([checker, *arguments], cwd=work, capture_output=True)
    out = done.stdout.decode()
    if done.returncode != status:
        fail(f"{' '.join(arguments)}: exit {done.returncode}, not {status}\n{out}{done.stderr.decode()}")
    checked += 1
    return out


def md5_line(out):
    lines = [line for line in out.splitlines() if line.startswith("md5: ")]
    if len(lines) != 1:
        fail("no one md5 line in\n" + out)
    return lines[0]


def write(name, content):
    with open(os.path.join(work, name), "wb") as out:
        out.write(content)
    return name


# The hash of every kind of data, alone and beside the levels.
STEREO16, STEREO24 = (2, 16), (2, 24)
cases = {
    "short-even.wav": riff(noise(40000, 1), *STEREO16),
    "short-odd.wav": riff(noise(6 * 1000 + 5, 2), *STEREO24),
    "long-even.wav": riff(noise(9 * 1024 * 1024 + 4, 3), *STEREO16),
    "long-odd.wav": riff(noise(9 * 1024 * 1024 + 3, 4), *STEREO24),
    "rf64-odd.wav": rf64(noise(5 * 1024 * 1024 + 1, 5), *STEREO16),
    "rf64-short.wav": rf64(noise(4802, 6), *STEREO24),
}
hashes = {}
for name, content in cases.items():
    write(name, content)
    expected = hashes[name] = hashlib.md5(data_of(content)).hexdigest()
    for arguments in (["--md5"], ["--levels", "--md5"], ["--md5", "--levels", "--loudness"]):
        line = md5_line(run(*arguments, name))
        if line != f"md5: computed {expected}, none stored":
            fail(f"{name} {arguments}: {line}, not {expected}")
        answer = json.loads(run("--json", *arguments, name))[0]
        if answer["md5"] != {"computed": expected, "stored": None, "outcome": "none-stored", "findings": []}:
            fail(f"{name} {arguments}: {answer['md5']}")
        if ("channels" in answer) != ("--levels" in arguments):
            fail(f"{name} {arguments}: levels {'missing' if '--levels' in arguments else 'unasked'}")

# A stored MD5 chunk behind the audio: its own, another, one of 20 bytes.
data = noise(6 * 777 + 3, 7)
right = hashlib.md5(data).hexdigest()
wrong = hashlib.md5(b"another").hexdigest()
stored = {
    "match.wav": (b"MD5 " + struct.pack("<I", 16) + bytes.fromhex(right), 0, "match", right, None),
    "mismatch.wav": (b"MD5 " + struct.pack("<I", 16) + bytes.fromhex(wrong), 1, "mismatch", wrong, "data.md5-mismatch"),
    "wrong-size.wav": (b"MD5 " + struct.pack("<I", 20) + bytes(20), 1, "wrong-size", None, "data.md5-size"),
}
for make in (riff, rf64):
    for name, (chunk, status, outcome, hex_stored, code) in stored.items():
        name = write(make.__name__ + "-" + name, make(data, *STEREO24, chunk))
        for arguments in (["--md5"], ["--levels", "--md5"]):
            line = md5_line(run(*arguments, name, status=status))
            want = {"match": f"stored {right}, match", "mismatch": f"stored {wrong}, mismatch",
                    "wrong-size": "stored chunk of 20 bytes, not 16"}[outcome]
            if line != f"md5: computed {right}, {want}":
                fail(f"{name} {arguments}: {line}")
            answer = json.loads(run("--json", *arguments, name, status=status))[0]["md5"]
            codes = [finding["code"] for finding in answer["findings"]]
            if (answer["computed"], answer["stored"], answer["outcome"], codes) != \
                    (right, hex_stored, outcome, [code] if code else []):
                fail(f"{name} {arguments}: {answer}")
        chunks = run("--chunks", name)
        if hex_stored and f"16 bytes, md5 {hex_stored}" not in chunks:
            fail(f"{name}: --chunks shows no hash\n{chunks}")

# A copy made with --tidy --md5 verifies, its stored chunk replaced; a
# RIFF copy and an RF64 one.
for source in ("riff-mismatch.wav", "rf64-wrong-size.wav", "long-odd.wav"):
    copy = "tidy-" + source
    if os.path.exists(os.path.join(work, copy)):
        os.remove(os.path.join(work, copy))
    said = run("--tidy", copy, "--md5", source)
    expected = hashes.get(source, right)
    if f"MD5 of the audio stored" not in said or expected not in said:
        fail(f"--tidy --md5 {source} says\n{said}")
    line = md5_line(run("--md5", copy))
    if line != f"md5: computed {expected}, stored {expected}, match":
        fail(f"{copy}: {line}")

# A data chunk that runs past the end of the file has no MD5: refused alone,
# said beside the levels, and the exit status 1 both ways.
whole = riff(data, *STEREO24)
name = write("cut.wav", whole[:len(whole) - 1000])  # the pad byte and 999 of the audio
out = run("--md5", name, status=1)
if out != f"(the data chunk declares {len(data):,} bytes, the file holds {len(data) - 999:,} of them)\n":
    fail("cut short, alone: " + out)
out = run("--levels", "--md5", name, status=1)
if "duration" not in out or md5_line(out) != f"md5: not computed: the data chunk declares {len(data):,} bytes, " \
                                               f"the file holds {len(data) - 999:,} of them":
    fail("cut short, with the levels: " + out)

print(f"md5_oracle: {checked} runs agree")
