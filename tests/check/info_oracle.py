#!/usr/bin/env python3
"""--info against files of known content, and its warnings.

  info_oracle.py SONDARA-CHECK FAULT-SHIM WORK-FOLDER

Holds --info --json to what the bytes of each file say: INFO text that
ffmpeg writes in UTF-8 and that the test writes in CP932 (with a CSET chunk
and without), Latin-1, in a code page not decoded, and in no encoding; the
bext that ffmpeg writes from its metadata keys, field by field; cue points
and sampler loops of the test's own bytes, against sndfile-info's --cue and
--instrument. Then no warning on the files ffmpeg writes with bext and
INFO; the tidy copy of an unfinished recording
saying which marks it keeps past its audio. A read error, a file that is
not RIFF WAVE and a missing one end --info with status 1 and say so.
"""
import json
import os
import re
import shutil
import struct
import subprocess
import sys

FAILURES = []


def expect(what, got, wanted):
    if got != wanted:
        FAILURES.append(f"{what}: got {got!r}, wanted {wanted!r}")


def chunk(fourcc, body):
    return fourcc + struct.pack("<I", len(body)) + body + (b"\0" if len(body) % 2 else b"")


def wave(*chunks, frames=100, rate=44100):
    fmt = chunk(b"fmt ", struct.pack("<HHIIHH", 1, 1, rate, rate * 2, 2, 16))
    body = b"WAVE" + fmt + b"".join(c for c in chunks if c[:4] != b"data")
    body += chunk(b"data", b"\0\0" * frames) + b"".join(c for c in chunks if c[:4] == b"data")
    return b"RIFF" + struct.pack("<I", len(body)) + body


def as_rf64(riff):
    """The same chunks in an RF64 file: a ds64 chunk first, the RIFF and
    data sizes deferring to it."""
    position, chunks = 12, b""
    while position < len(riff):
        fourcc, size = riff[position:position + 4], struct.unpack_from("<I", riff, position + 4)[0]
        whole = riff[position:position + 8 + size + size % 2]
        if fourcc == b"data":
            data_size = size
            whole = b"data" + struct.pack("<I", 0xFFFFFFFF) + whole[8:]
        chunks += whole
        position += len(whole)
    ds64 = chunk(b"ds64", struct.pack("<QQQI", 4 + 36 + len(chunks), data_size, data_size // 2, 0))
    return b"RF64" + struct.pack("<I", 0xFFFFFFFF) + b"WAVE" + ds64 + chunks


def without_offsets(value):
    if isinstance(value, dict):
        return {k: without_offsets(v) for k, v in value.items() if k not in ("offset", "position")}
    if isinstance(value, list):
        return [without_offsets(v) for v in value]
    return value


def info_list(*entries):
    return chunk(b"LIST", b"INFO" + b"".join(chunk(fourcc, text + b"\0") for fourcc, text in entries))


def cset(code_page):
    return chunk(b"CSET", struct.pack("<HHHH", code_page, 81, 17, 1))


def bext(description):
    return chunk(b"bext", description.ljust(346, b"\0") + struct.pack("<H", 1) + bytes(254))


def cue(*points):
    body = struct.pack("<I", len(points))
    for ident, sample in points:
        body += struct.pack("<II4sIII", ident, sample, b"data", 0, 0, sample)
    return chunk(b"cue ", body)


def adtl(*labels):
    return chunk(b"LIST", b"adtl" + b"".join(chunk(kind, struct.pack("<I", ident) + text + b"\0")
                                             for kind, ident, text in labels))


def smpl(loops, unity=60):
    body = struct.pack("<9I", 0, 0, 22675, unity, 0, 0, 0, len(loops), 0)
    for ident, start, end in loops:
        body += struct.pack("<6I", ident, 0, start, end, 0, 0)
    return chunk(b"smpl", body)


def run(checker, arguments, env=None):
    return subprocess.run([checker] + arguments, capture_output=True, env=env)


def info_of(checker, path):
    result = run(checker, ["--info", "--json", path])
    if result.returncode != 0:
        FAILURES.append(f"--info {path}: status {result.returncode}, {result.stderr!r}")
        return []
    return json.loads(result.stdout)[0]["chunks"]


def ffmpeg(path, *options):
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.05:r=44100", "-c:a", "pcm_s16le",
                    *options, path], check=True)


def check_info_text(checker, work):
    title = "日本語のタイトル"
    ffmpeg(os.path.join(work, "ff-utf8.wav"), "-metadata", "title=" + title)
    cases = [
        ("ff-utf8.wav", None, title, "UTF-8"),
        ("cp932-cset.wav", wave(cset(932), info_list((b"INAM", title.encode("cp932")))), title, "CP932 by CSET 932"),
        ("cp932.wav", wave(info_list((b"INAM", title.encode("cp932")))), title, "CP932"),
        ("utf8-cset.wav", wave(cset(65001), info_list((b"INAM", title.encode()))), title, "UTF-8 by CSET 65001"),
        ("latin1.wav", wave(info_list((b"INAM", "Café à côté".encode("latin-1")))), "Café à côté", "Latin-1"),
        ("ascii.wav", wave(info_list((b"INAM", b"Take 1"))), "Take 1", "ASCII"),
        ("none.wav", wave(info_list((b"INAM", b"A\x81 \x80\\"))), "A\\x81 \\x80\\\\", "none"),
        ("cp1251.wav", wave(cset(1251), info_list((b"INAM", "Пр".encode("cp1251")))), "\\xCF\\xF0",
         "code page 1251, not decoded"),
    ]
    for name, data, text, encoding in cases:
        path = os.path.join(work, name)
        if data:
            with open(path, "wb") as out:
                out.write(data)
        entries = [entry for c in info_of(checker, path) if c.get("list") == "INFO" for entry in c["entries"]]
        names = [entry for entry in entries if entry["id"] == "INAM"]
        expect(f"{name} INAM", [(e["text"], e["textEncoding"]) for e in names], [(text, encoding)])


def check_bext(checker, work):
    path = os.path.join(work, "ff-bext.wav")
    umid = "060A2B340101010101010F0013000000" + "12" * 16 + "34" * 32
    fields = {"description": "A take", "originator": "Field recorder", "originator_reference": "REF-42",
              "origination_date": "2024-05-06", "origination_time": "10:20:30", "time_reference": "88201",
              "coding_history": "A=PCM,F=44100,W=16,M=mono\r\nA=PCM,F=44100,W=16,T=ffmpeg\r\n", "umid": "0x" + umid}
    ffmpeg(path, "-write_bext", "1", *[part for key, value in fields.items() for part in ("-metadata", f"{key}={value}")])
    found = [c for c in info_of(checker, path) if c["id"] == "bext"]
    if len(found) != 1:
        FAILURES.append(f"ff-bext.wav: {len(found)} bext chunks")
        return
    got = found[0]
    expect("bext offset", got["offset"], open(path, "rb").read().find(b"bext"))
    for key, name in [("description", "Description"), ("originator", "Originator"),
                      ("originator_reference", "OriginatorReference"), ("origination_date", "OriginationDate"),
                      ("origination_time", "OriginationTime")]:
        expect("bext " + name, (got[name], got[name + "Encoding"]), (fields[key], "ASCII"))
    expect("bext TimeReference", (got["TimeReference"], got["TimeReferenceClock"]),
           (88201, "00:00:02 + 1 samples at 44100 Hz"))
    expect("bext UMID", (got["UMID"], got["UMIDKind"]), (umid, "extended"))
    expect("bext CodingHistory", got["CodingHistory"], fields["coding_history"].split("\r\n")[:-1])


def check_cue_and_loops(checker, work):
    path = os.path.join(work, "cue-smpl.wav")
    with open(path, "wb") as out:
        out.write(wave(cue((1, 10), (2, 70)), adtl((b"labl", 1, b"Verse"), (b"note", 2, b"Chorus")),
                       smpl([(1, 10, 69)], unity=64)))
    chunks = {c["id"]: c for c in info_of(checker, path)}
    points = chunks.get("cue ", {}).get("points", [])
    expect("cue points", [(p["id"], p["sample"], p["sampleSeconds"], p.get("labl"), p.get("note")) for p in points],
           [(1, 10, round(10 / 44100, 6), "Verse", None), (2, 70, round(70 / 44100, 6), None, "Chorus")])
    # sndfile-info tells the cue chunk as it parses the header.
    header = subprocess.run(["sndfile-info", path], capture_output=True, text=True).stdout
    theirs = [tuple(map(int, m)) for m in re.findall(r"Cue ID :\s*(\d+)\s+Pos :\s*(\d+).*?Offset :\s*(\d+)", header)]
    expect("cue points against sndfile-info", [(p["id"], p["position"], p["sample"]) for p in points], theirs)
    # Its loops end one past the last frame, where the smpl chunk's end is
    # the last frame.
    sampler = chunks.get("smpl", {})
    ours = (sampler.get("unityNote"), [(loop["start"], loop["end"] + 1) for loop in sampler.get("loops", [])])
    out = subprocess.run(["sndfile-info", "--instrument", path], capture_output=True, text=True).stdout
    base = re.search(r"Base note\s*:\s*(\d+)", out)
    ends = re.findall(r"Start :\s*(\d+)\s+End :\s*(\d+)", out)
    expect("smpl against sndfile-info", ours, (int(base.group(1)) if base else None, [tuple(map(int, e)) for e in ends]))
    # The same chunks in an RF64 file read the same, and a loop past its
    # audio is a warning there too.
    rf64 = os.path.join(work, "cue-smpl-rf64.wav")
    with open(rf64, "wb") as out:
        out.write(as_rf64(wave(cue((1, 10), (2, 70)), adtl((b"labl", 1, b"Verse"), (b"note", 2, b"Chorus")),
                               smpl([(1, 10, 100)], unity=64))))
    riff = [c for c in info_of(checker, path)]
    for c in riff:
        if c["id"] == "smpl":
            c["loops"][0].update(end=100, endSeconds=round(100 / 44100, 6))
    expect("RF64 --info", without_offsets(info_of(checker, rf64)), without_offsets(riff))
    checked = json.loads(run(checker, ["--json", rf64]).stdout)[0]
    expect("RF64 warnings", sorted(f["code"] for f in checked["findings"] if f["code"].startswith("smpl.")),
           ["smpl.loop-past-end"])


def check_no_warnings_on_ffmpeg_files(checker, work):
    """What ffmpeg writes, with a sound bext and INFO, gives no warning; each
    warning's own file is in tests/check/FileCheckTest.cpp."""
    for name in ("ff-bext.wav", "ff-utf8.wav"):
        findings = json.loads(run(checker, ["--json", os.path.join(work, name)]).stdout)[0]["findings"]
        expect(f"warnings of {name}", [f["code"] for f in findings], [])


def check_tidy_says_marks_past_the_audio(checker, work):
    """An unfinished recording whose marks were set at the frames written
    so far: the copy cuts the partial frame, and says which marks now lie
    past its audio (the one at frame 99 does not)."""
    unfinished = wave(cue((1, 99), (2, 100)), smpl([(3, 0, 100)]), frames=100) + b"\1"
    unfinished = unfinished[:4] + b"\0\0\0\0" + unfinished[8:]
    at = unfinished.rfind(b"data")
    unfinished = unfinished[:at + 4] + b"\0\0\0\0" + unfinished[at + 8:]
    path, copy = os.path.join(work, "unfinished-marks.wav"), os.path.join(work, "tidy-marks.wav")
    with open(path, "wb") as out:
        out.write(unfinished)
    result = run(checker, ["--tidy", copy, path])
    said = [line for line in result.stdout.decode().splitlines() if "past the" in line]
    expect("tidy of marks past the audio", (result.returncode, said),
           (0, ["cue point 2 at frame 100, past the 100 frames of audio kept",
                "smpl loop 3 ends at frame 100, past the 100 frames of audio kept"]))


def check_unreadable(checker, shim, work):
    """A read that fails, a file that is not RIFF WAVE, and no file: each
    said, in text and JSON, with exit status 1."""
    path = os.path.join(work, "broken-read.wav")
    with open(path, "wb") as out:
        out.write(wave(bext(b"x"), frames=2000))
    with open(os.path.join(work, "text.wav"), "wb") as out:
        out.write(b"RIFF, but then text")
    env = dict(os.environ, LD_PRELOAD=shim, SONDARA_FAULT_PATH="broken-read", SONDARA_FAULT_EIO_AFTER="60")
    for name, problem in (("broken-read.wav", "read error"), ("text.wav", "not a RIFF WAVE file"),
                          ("none.wav.missing", "no such file")):
        for arguments, marker in ((["--info"], f"({problem})"), (["--info", "--json"], f'"error": "{problem}"')):
            result = run(checker, arguments + [os.path.join(work, name)], env)
            if result.returncode != 1 or marker.encode() not in result.stdout:
                FAILURES.append(f"{arguments} {name}: status {result.returncode}, {result.stdout!r}")


def main():
    checker, shim, work = sys.argv[1:4]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    check_info_text(checker, work)
    check_bext(checker, work)
    check_cue_and_loops(checker, work)
    check_no_warnings_on_ffmpeg_files(checker, work)
    check_tidy_says_marks_past_the_audio(checker, work)
    check_unreadable(checker, shim, work)
    for failure in FAILURES:
        print(failure)
    return 1 if FAILURES else 0


if __name__ == "__main__":
    sys.exit(main())
