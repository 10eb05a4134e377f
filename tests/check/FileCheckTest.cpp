#include "check/FileCheck.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <set>

namespace {

void CheckPath(const WideString& path, FileCheck& check)
{
    FileLayout layout(path, kCheckReading);
    CheckFile(layout, check);
}

std::string Extensible(std::uint16_t subFormat, std::uint16_t channels, std::uint16_t bits)
{
    const auto align = static_cast<std::uint16_t>(channels * bits / 8);
    return RiffBytes()
        .U16(0xFFFE).U16(channels).U32(48000).U32(48000u * align).U16(align).U16(bits)
        .U16(22).U16(bits).U32(0x3)
        .U16(subFormat).Raw(std::string("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14))
        .Bytes();
}

const std::string kFmt = FmtBytes(FormatBody(1, 2, 44100, 16)); // 24 bytes, frames of 4
const std::string kFmt8 = FmtBytes(FormatBody(1, 1, 8000, 8));  // frames of 1
const std::string kAudio(400, '\x01');

// A finding as one line, so that a table row reads as the checker's output:
// "data.truncated @36 data declared 1002 actual 400".
std::string Describe(const std::string& code, std::int64_t offset, const std::string& chunk, std::int64_t declared,
                     std::int64_t actual)
{
    std::string line = code;
    if (offset >= 0)
        line += " @" + std::to_string(offset) + " " + chunk;
    if (declared >= 0)
        line += " declared " + std::to_string(declared);
    if (actual >= 0)
        line += " actual " + std::to_string(actual);
    return line;
}

// A bext body of 602 bytes with these texts and version, loudness all 0.
std::string BextBody(const std::string& description, const std::string& date, const std::string& time,
                     std::uint16_t version = 1)
{
    std::string body(602, '\0');
    body.replace(0, description.size(), description);
    body.replace(320, date.size(), date);
    body.replace(330, time.size(), time);
    body[346] = static_cast<char>(version);
    return body;
}

// A cue chunk's body of points at these frames, each its place's id.
std::string CueBody(std::initializer_list<std::uint32_t> frames)
{
    RiffBytes body;
    body.U32(static_cast<std::uint32_t>(frames.size()));
    std::uint32_t id = 0;
    for (std::uint32_t frame : frames)
        body.U32(++id).U32(frame).Id("data").U32(0).U32(0).U32(frame);
    return body.Bytes();
}

struct Expected {
    std::string code;
    std::int64_t offset = -1;
    std::string chunk{};
    std::int64_t declared = -1;
    std::int64_t actual = -1;
};

} // namespace

// Each file a writer or a broken recording leaves, and every finding it must
// give, errors and warnings, each at the offset of the chunk it is about
// (the RIFF header for what concerns the RIFF size) with its figures:
// nothing for what is legal, exactly the fault for what is not. Every kind
// that a file's bytes can give has a row here.
TEST(FileCheckFindings, EachKindAtTheChunkItIsAboutWithItsFigures)
{
    const std::string data = DataBytes(kAudio);
    const std::string list = RiffBytes().Chunk("LIST", RiffBytes().Id("INFO").ChunkNoPad("ISFT", {"ab\0", 3}).Bytes()).Bytes();
    const std::string partial(3527, '\x01'); // 16-bit stereo: 881 frames and 3 bytes
    const struct {
        const char* name;
        std::string bytes;
        std::vector<Expected> findings;
        bool sound = false;
    } cases[] = {
        {"sound", SoundWave(), {}, true},
        {"odd chunk with its pad", Riff(kFmt + RiffBytes().Chunk("junk", "abc").Bytes() + data), {}, true},
        {"list and bext", Riff(kFmt + list + RiffBytes().Chunk("bext", std::string(602, '\0')).Bytes() + data), {}, true},
        {"extensible PCM", Riff(FmtBytes(Extensible(1, 2, 24)) + DataBytes(std::string(6 * 60, '\x01'))), {}, true},
        // Some writers leave the last pad byte out of the RIFF size.
        {"pad byte behind an odd RIFF chunk", Riff(kFmt8 + RiffBytes().ChunkNoPad("data", "abc").Bytes()) + '\0', {}, true},
        {"odd last chunk without its pad", Riff(kFmt8 + RiffBytes().ChunkNoPad("data", "abc").Bytes()),
         {{"chunk.missing-pad", 36, "data", 3}}, true},
        {"odd chunk without its pad", Riff(kFmt + RiffBytes().ChunkNoPad("junk", "abc").Bytes() + data),
         {{"data.missing"}, {"chunk.missing-pad", 36, "junk", 3}}},
        {"not RIFF", "hello, this is text", {{"riff.not-riff"}}},
        {"RIFF further on", "junk" + SoundWave(), {{"riff.structure"}}},
        {"empty RIFF", Riff(""), {{"format.missing"}, {"data.missing"}}},
        {"RF64", RiffBytes().Head("RF64", 0xFFFFFFFF).Bytes() + kFmt + data, {{"riff.not-riff"}, {"container.rf64", 0, "RF64"}}},
        {"bad format and empty data", Riff(FmtBytes(RiffBytes().U16(3).U16(6).U32(0).U32(0).U16(24).U16(32).Bytes()) + DataBytes("")),
         {{"format.not-pcm", 12, "fmt "}, {"format.sample-rate", 12, "fmt "}, {"format.bits", 12, "fmt "},
          {"format.channels", 12, "fmt "}, {"data.size", 36, "data"}, {"data.frames", 36, "data"}}},
        // The check takes the format chunk read last; the warning is of the
        // second one too.
        {"two format chunks", Riff(kFmt + FmtBytes(FormatBody(3, 2, 44100, 32)) + data),
         {{"format.not-pcm", 36, "fmt "}, {"format.bits", 36, "fmt "}, {"format.duplicate", 36, "fmt "}}},
        // The data chunk that the check reads lies outside the RIFF chunk.
        {"empty data behind a RIFF chunk that ends early", RiffBytes().Head("RIFF", 4 + 24).Bytes() + kFmt + DataBytes(""),
         {{"data.size", 36, "data"}, {"data.frames", 36, "data"}, {"riff.trailing-bytes", 0, "RIFF", 28, 36}}},
        {"bytes after the RIFF chunk", Riff(kFmt + data) + "ID3\x03junk",
         {{"riff.trailing-bytes", 0, "RIFF", 436, 444}}, true},
        {"unfinished: sizes 0", RiffBytes().Head("RIFF", 0).Raw(kFmt).ChunkWithSize("data", 0, kAudio).Bytes(),
         {{"data.size", 36, "data"}, {"riff.size-placeholder", 0, "RIFF", 0, 436}, {"data.size-placeholder", 36, "data", 0, 400}}},
        // Placeholders and sizes past the end are no partial frames, whatever they divide into.
        {"unfinished: sizes 0xFFFFFFFF",
         RiffBytes().Head("RIFF", 0xFFFFFFFF).Raw(kFmt).ChunkWithSize("data", 0xFFFFFFFF, kAudio).Bytes(),
         {{"riff.size-placeholder", 0, "RIFF", 0xFFFFFFFF, 436}, {"data.size-placeholder", 36, "data", 0xFFFFFFFF, 400}}, true},
        {"unfinished: the paged placeholder",
         RiffBytes().Head("RIFF", 0x7FFFF024).Raw(kFmt).ChunkWithSize("data", 0x7FFFF000, kAudio).Bytes(),
         {{"riff.size-placeholder", 0, "RIFF", 0x7FFFF024, 436}, {"data.size-placeholder", 36, "data", 0x7FFFF000, 400}}, true},
        {"cut short in the audio", RiffBytes().Head("RIFF", 4 + 24 + 8 + 1002).Raw(kFmt).ChunkWithSize("data", 1002, kAudio).Bytes(),
         {{"riff.size-mismatch", 0, "RIFF", 1038, 436}, {"data.truncated", 36, "data", 1002, 400}}, true},
        {"block align", Riff(FmtBytes(FormatBodyAligned(1, 2, 44100, 16, 2)) + data), {{"format.block-align", 12, "fmt ", 2, 4}}, true},
        {"byte rate", Riff(FmtBytes(RiffBytes().U16(1).U16(2).U32(44100).U32(44100).U16(4).U16(16).Bytes()) + data),
         {{"format.byte-rate", 12, "fmt ", 44100, 176400}}, true},
        {"extensible float", Riff(FmtBytes(Extensible(3, 2, 32)) + data),
         {{"format.bits", 12, "fmt "}, {"format.extensible-not-pcm", 12, "fmt "}}},
        {"partial frame", Riff(kFmt + DataBytes(partial)), {{"data.partial-frame", 36, "data", 3527, 3524}}, true},
        {"partial frame, the format behind the data", Riff(DataBytes(partial) + kFmt),
         {{"data.partial-frame", 12, "data", 3527, 3524}}, true},
        // The metadata: each chunk at 36, behind the format chunk, and the
        // audio of 100 frames.
        {"bext texts", Riff(kFmt + RiffBytes().Chunk("bext", BextBody("Caf\xE9", "06/05/2024", "10h20")).Bytes() + data),
         {{"bext.text-not-ascii", 36, "bext"}, {"bext.date-form", 36, "bext"}, {"bext.time-form", 36, "bext"}}, true},
        {"bext of version 2 behind the audio, its loudness 0",
         Riff(kFmt + data + RiffBytes().Chunk("bext", BextBody("", "2024_05_06", "10.20.30", 2)).Bytes()),
         {{"bext.loudness-unset", 444, "bext", 2}, {"bext.after-data", 444, "bext"}}, true},
        {"INFO text of no encoding",
         Riff(kFmt + RiffBytes().Chunk("LIST", RiffBytes().Id("INFO").Chunk("INAM", "\x81 ").Bytes()).Bytes() + data),
         {{"info.text-undecodable", 48, "INAM"}}, true},
        {"cue points", Riff(kFmt + RiffBytes().Chunk("cue ", CueBody({99, 100})).Bytes() + data),
         {{"cue.past-end", 36, "cue ", 100, 100}}, true},
        // Loops: ending at the frame count, reversed; three counted.
        {"sampler loops",
         Riff(kFmt + RiffBytes().Chunk("smpl", RiffBytes().U32(0).U32(0).U32(22675).U32(60).U32(0).U32(0).U32(0).U32(3).U32(0)
                                                   .U32(1).U32(0).U32(0).U32(100).U32(0).U32(0)
                                                   .U32(2).U32(0).U32(50).U32(40).U32(0).U32(0).Bytes()).Bytes() + data),
         {{"smpl.loop-count", 36, "smpl", 3, 2}, {"smpl.loop-past-end", 36, "smpl", 100, 100},
          {"smpl.loop-reversed", 36, "smpl", 50, 40}}, true},
        {"a label of no cue point",
         Riff(kFmt + RiffBytes().Chunk("cue ", CueBody({5})).Bytes() +
              ListBytes("adtl", RiffBytes().Chunk("labl", std::string("\1\0\0\0a", 6)).Chunk("labl", std::string("\7\0\0\0b", 6)).Bytes()) + data),
         {{"adtl.unknown-cue", 98, "labl", 7}}, true},
        {"iXML of another rate",
         Riff(kFmt + RiffBytes().Chunk("iXML", "<BWFXML><SPEED><FILE_SAMPLE_RATE>48000</FILE_SAMPLE_RATE></SPEED></BWFXML>").Bytes() + data),
         {{"ixml.sample-rate", 36, "iXML", 48000, 44100}}, true},
        // A compressed format's block holds many frames, and its last one
        // may be cut short.
        {"blocks of a compressed format", Riff(FmtBytes(FormatBodyAligned(0x11, 1, 8000, 4, 256)) + DataBytes(std::string(300, '\0'))),
         {{"format.not-pcm", 12, "fmt "}, {"format.bits", 12, "fmt "}}},
    };
    // Kinds that come of a path, never of a file's bytes.
    std::set<std::string> covered = {"file.missing", "file.unreadable", "folder.unreadable", "folder.link-loop",
                                     "file.broken-link"};
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FileCheck check;
        CheckPath(dir.Write("case.wav", c.bytes), check);
        std::vector<std::string> found, expected;
        for (const Finding& finding : check.findings)
            found.push_back(Describe(finding.kind->code, finding.offset.value_or(-1), finding.chunk,
                                     finding.declared.value_or(-1), finding.actual.value_or(-1)));
        for (const Expected& e : c.findings) {
            expected.push_back(Describe(e.code, e.offset, e.chunk, e.declared, e.actual));
            covered.insert(e.code);
        }
        EXPECT_EQ(found, expected);
        // Warnings never change the verdict.
        EXPECT_EQ(check.hasError, !c.sound);
    }
    // Every code of the table has a file above, stands once, is dotted and
    // is found by its name. The documents are held to the table by
    // doc-tables (tools/DocTables.cpp).
    std::size_t count = 0;
    const FindingKind* kinds = FindingKinds(count);
    std::set<std::string> codes;
    for (std::size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(kinds[i].code);
        // What the audio shows comes from --levels, whose table is in
        // tests/check/meters_oracle.py; the MD5's from --md5, in
        // tests/check/md5_oracle.py.
        const std::string_view code = kinds[i].code;
        if (!code.starts_with("audio.") && code.find(".md5-") == std::string_view::npos) {
            EXPECT_TRUE(covered.count(kinds[i].code)) << "no file in the table";
        }
        EXPECT_TRUE(codes.insert(kinds[i].code).second);
        EXPECT_NE(std::string(kinds[i].code).find('.'), std::string::npos);
        EXPECT_EQ(FindFindingKind(kinds[i].code), &kinds[i]);
    }
}

// The errors are the report's lines, one for one, each with the code whose
// text it begins with, its value, and the chunk it is about. A warning's
// figures beyond the declared and actual ones stand in both texts, between
// those and the offset. A check done again forgets what it found before.
TEST(FileCheckFindings, ErrorsAreTheReportLinesAndWarningsSayTheirFigures)
{
    TempDir dir;
    // A tag whose hexadecimal digits read as another decimal number.
    const std::string body = RiffBytes().U16(0x55).U16(6).U32(0).U32(0).U16(24).U16(32).Bytes();
    FileCheck check;
    CheckPath(dir.Write("bad.wav", Wave(body, "")), check);
    const std::u16string report = check.report.ToU16String();
    std::vector<std::string> codes;
    std::u16string lines;
    for (const Finding& finding : check.findings) {
        ASSERT_EQ(finding.kind->severity, Severity::Error);
        codes.push_back(finding.kind->code);
        lines += finding.text.ToU16String() + u"\r\n";
        EXPECT_TRUE(finding.value.has_value());
    }
    EXPECT_EQ(lines, report);
    EXPECT_EQ(codes, (std::vector<std::string>{"format.not-pcm", "format.sample-rate", "format.bits", "format.channels",
                                               "data.size", "data.frames"}));
    // The English message writes the tag as the Japanese line does.
    EXPECT_EQ(check.findings[0].value, 0x55);
    EXPECT_EQ(check.findings[0].message, "The audio is not PCM. [0055]");
    EXPECT_EQ(check.findings[0].text.ToU16String(), u"PCMではありません。 [0055]");
    EXPECT_EQ(check.findings[3].value, 6);
    EXPECT_EQ(check.findings[3].message, "The file has neither one nor two channels. [6]");

    CheckPath(dir.Write("partial.wav", Riff(kFmt + DataBytes(std::string(3527, '\x01')))), check);
    EXPECT_EQ(check.report.ToU16String(), u"チェック完了しました。\r\n");
    ASSERT_EQ(check.findings.size(), 1u);
    EXPECT_EQ(check.findings[0].message, "The data size is not a whole number of frames: the last frame is partial. "
                                         "(declared 3,527, actual 3,524, whole frames 881, bytes left over 3, at offset 36)");
    EXPECT_EQ(check.findings[0].text.ToU16String(),
              u"データのサイズがブロックサイズの倍数ではありません。 [宣言 3527, 実際 3524, フレーム 881, 余り 3, 位置 36]");

    CheckPath(dir.Write("sound.wav", SoundWave()), check);
    EXPECT_FALSE(check.hasError);
    EXPECT_TRUE(check.findings.empty());
    CheckPath(WideString(u"no such file.wav"), check);
    ASSERT_EQ(check.findings.size(), 1u);
    EXPECT_EQ(std::string(check.findings[0].kind->code), "file.missing");
}
