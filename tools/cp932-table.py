#!/usr/bin/env python3
"""Writes the CP932 table of the metadata text decoder from python3's own
cp932 codec, so that every build decodes the same, whatever the machine's
code page: `table OUT.cpp` writes the source, `pairs OUT.txt` writes every
two-byte sequence with what the codec makes of it, for the test."""
import sys

NONE = 0xFFFF


def decoded(data):
    try:
        return data.decode("cp932")
    except UnicodeDecodeError:
        return None


def is_lead(byte):
    return decoded(bytes([byte])) is None


def write_table(path):
    singles = []
    for byte in range(256):
        text = decoded(bytes([byte]))
        singles.append(NONE if text is None else ord(text))
    leads = [byte for byte in range(256) if is_lead(byte)]
    pairs = []
    for lead in leads:
        for trail in range(256):
            text = decoded(bytes([lead, trail]))
            pairs.append(ord(text) if text is not None and len(text) == 1 else NONE)
    lead_index = [0xFF] * 256
    for index, lead in enumerate(leads):
        lead_index[lead] = index

    def rows(values, width, form):
        return ",\n".join("    " + ", ".join(form % v for v in values[i:i + width]) for i in range(0, len(values), width))

    with open(path, "w", encoding="ascii", newline="\n") as out:
        out.write("// Made at build time by tools/cp932-table.py from python3's cp932 codec.\n")
        out.write('#include "wave/Cp932Table.h"\n\n')
        out.write("const char16_t kCp932Single[256] = {\n%s};\n\n" % rows(singles, 12, "0x%04X"))
        out.write("const unsigned char kCp932LeadIndex[256] = {\n%s};\n\n" % rows(lead_index, 16, "0x%02X"))
        out.write("const char16_t kCp932Pairs[%d * 256] = {\n%s};\n" % (len(leads), rows(pairs, 12, "0x%04X")))


def write_pairs(path):
    with open(path, "w", encoding="ascii", newline="\n") as out:
        for first in range(256):
            for second in range(256):
                text = decoded(bytes([first, second]))
                units = "-" if text is None else " ".join("%04X" % ord(c) for c in text)
                out.write("%02X%02X %s\n" % (first, second, units))


if __name__ == "__main__":
    (write_table if sys.argv[1] == "table" else write_pairs)(sys.argv[2])
