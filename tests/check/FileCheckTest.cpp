#include "check/FileCheck.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <set>

namespace {

// A warning as the table below expects it: code, declared, actual, offset
// (-1 where there is none).
struct Expected {
    std::string code;
    std::int64_t declared = -1;
    std::int64_t actual = -1;
    std::int64_t offset = -1;
};

std::string U32(std::uint32_t value)
{
    return RiffBytes().U32(value).Bytes();
}

std::string Extensible(std::uint16_t subFormat, std::uint16_t channels, std::uint16_t bits)
{
    const auto align = static_cast<std::uint16_t>(channels * bits / 8);
    return RiffBytes()
        .U16(0xFFFE).U16(channels).U32(48000).U32(48000u * align).U16(align).U16(bits)
        .U16(22).U16(bits).U32(channels == 6 ? 0x3F : 0x3)
        .U16(subFormat).Raw(std::string("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14))
        .Bytes();
}

std::string Header(std::string_view id, std::uint32_t size)
{
    return RiffBytes().Id(id).U32(size).Id("WAVE").Bytes();
}

const std::string kFmt = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Bytes(); // 24 bytes
const std::string kAudio(400, '\x01');

} // namespace

// Each file a writer or a broken recording leaves, and the warnings it must
// give with their figures: nothing for what is legal, exactly the fault
// for what is not.
TEST(FileCheckWarnings, EachFaultWithItsFiguresAndNothingForWhatIsLegal)
{
    const std::string data = RiffBytes().Chunk("data", kAudio).Bytes();
    const std::string list = RiffBytes().Chunk("LIST", std::string("INFOISFT") + U32(3) + "ab\0" + '\0').Bytes();
    const struct {
        const char* name;
        std::string bytes;
        std::vector<Expected> warnings;
    } cases[] = {
        {"sound", SoundWave(), {}},
        {"odd chunk with its pad", Riff(kFmt + RiffBytes().Chunk("junk", "abc").Bytes() + data), {}},
        {"list and bext", Riff(kFmt + list + RiffBytes().Chunk("bext", std::string(602, '\0')).Bytes() + data), {}},
        {"extensible PCM", Riff(RiffBytes().Chunk("fmt ", Extensible(1, 6, 24)).Bytes() + data), {}},
        // Some writers leave the last pad byte out of the RIFF size.
        {"pad byte behind an odd RIFF chunk", Riff(kFmt + RiffBytes().ChunkNoPad("data", "abc").Bytes()) + '\0', {}},
        {"odd last chunk without its pad", Riff(kFmt + RiffBytes().ChunkNoPad("data", "abc").Bytes()),
         {{"chunk.missing-pad", 3, -1, 36}}},
        {"RF64", Header("RF64", 0xFFFFFFFF) + kFmt + data, {{"container.rf64", -1, -1, 0}}},
        {"unfinished: sizes 0", Header("RIFF", 0) + kFmt + RiffBytes().ChunkWithSize("data", 0, kAudio).Bytes(),
         {{"riff.size-placeholder", 0, 436, 4}, {"data.size-placeholder", 0, 400, 36}}},
        {"unfinished: sizes 0xFFFFFFFF",
         Header("RIFF", 0xFFFFFFFF) + kFmt + RiffBytes().ChunkWithSize("data", 0xFFFFFFFF, kAudio).Bytes(),
         {{"riff.size-placeholder", 0xFFFFFFFF, 436, 4}, {"data.size-placeholder", 0xFFFFFFFF, 400, 36}}},
        {"unfinished: the paged placeholder",
         Header("RIFF", 0x7FFFF024) + kFmt + RiffBytes().ChunkWithSize("data", 0x7FFFF000, kAudio).Bytes(),
         {{"riff.size-placeholder", 0x7FFFF024, 436, 4}, {"data.size-placeholder", 0x7FFFF000, 400, 36}}},
        {"cut short in the audio", Header("RIFF", 4 + 24 + 8 + 1000) + kFmt + RiffBytes().ChunkWithSize("data", 1000, kAudio).Bytes(),
         {{"riff.size-mismatch", 1036, 436, 4}, {"data.truncated", 1000, 400, 36}}},
        {"RIFF size too small", Header("RIFF", 4 + 24) + kFmt + data,
         {{"riff.trailing-bytes", 28, 436, 36}}},
        {"bytes after the RIFF chunk", Riff(kFmt + data) + "ID3\x03junk",
         {{"riff.trailing-bytes", 436, 444, 444}}},
        {"odd chunk without its pad", Riff(kFmt + RiffBytes().ChunkNoPad("junk", "abc").Bytes() + data),
         {{"chunk.missing-pad", 3, -1, 36}}},
        {"two format chunks", Riff(kFmt + kFmt + data), {{"format.duplicate", -1, -1, 36}}},
        {"block align", Riff(RiffBytes().Chunk("fmt ", FormatBodyAligned(1, 2, 44100, 16, 2)).Bytes() + data),
         {{"format.block-align", 2, 4, 12}}},
        {"byte rate", Riff(RiffBytes().Chunk("fmt ", RiffBytes().U16(1).U16(2).U32(44100).U32(44100).U16(4).U16(16).Bytes()).Bytes() + data),
         {{"format.byte-rate", 44100, 176400, 12}}},
        {"extensible float", Riff(RiffBytes().Chunk("fmt ", Extensible(3, 2, 32)).Bytes() + data),
         {{"format.extensible-not-pcm", -1, -1, 12}}},
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FileCheck check;
        CheckFile(dir.Write("case.wav", c.bytes), check);
        std::vector<Expected> warnings;
        for (const Finding& finding : check.findings) {
            if (finding.kind->severity == Severity::Warning)
                warnings.push_back({finding.kind->code, finding.declared.value_or(-1), finding.actual.value_or(-1),
                                    finding.offset.value_or(-1)});
        }
        ASSERT_EQ(warnings.size(), c.warnings.size());
        for (std::size_t i = 0; i < warnings.size(); ++i) {
            EXPECT_EQ(warnings[i].code, c.warnings[i].code);
            EXPECT_EQ(warnings[i].declared, c.warnings[i].declared);
            EXPECT_EQ(warnings[i].actual, c.warnings[i].actual);
            EXPECT_EQ(warnings[i].offset, c.warnings[i].offset);
        }
        EXPECT_EQ(check.HasWarnings(), !c.warnings.empty());
    }
}

// The errors are the report's lines, one for one, each with the code whose
// text it begins with, its value, and the chunk it is about.
TEST(FileCheckFindings, ErrorsAreTheReportLinesWithCodesValuesAndPlaces)
{
    TempDir dir;
    const std::string body = RiffBytes().U16(3).U16(6).U32(0).U32(0).U16(24).U16(32).Bytes();
    FileCheck check;
    CheckFile(dir.Write("bad.wav", Riff(RiffBytes().Chunk("fmt ", body).Bytes() + RiffBytes().Chunk("data", "").Bytes())), check);
    const std::u16string report = check.report.ToU16String();
    std::vector<std::string> codes;
    std::u16string lines;
    for (const Finding& finding : check.findings) {
        ASSERT_EQ(finding.kind->severity, Severity::Error);
        codes.push_back(finding.kind->code);
        lines += finding.text.ToU16String() + u"\r\n";
        EXPECT_TRUE(finding.value.has_value());
        EXPECT_EQ(finding.offset.value_or(-1), finding.chunk == "fmt " ? 12 : 36);
    }
    EXPECT_EQ(lines, report);
    EXPECT_EQ(codes, (std::vector<std::string>{"format.not-pcm", "format.sample-rate", "format.bits", "format.channels",
                                               "data.size", "data.frames"}));
    EXPECT_EQ(check.findings[0].value, 3);
    EXPECT_EQ(check.findings[3].value, 6);

    CheckFile(dir.Write("sound.wav", SoundWave()), check);
    EXPECT_FALSE(check.hasError);
    EXPECT_TRUE(check.findings.empty());
    CheckFile(WideString(u"no such file.wav"), check);
    ASSERT_EQ(check.findings.size(), 1u);
    EXPECT_EQ(std::string(check.findings[0].kind->code), "file.missing");
}

// Every code is unique and dotted, and found by its name. The documents
// are held to the table by doc-tables (tools/DocTables.cpp).
TEST(FileCheckFindings, TheTableHoldsEachCodeOnce)
{
    std::size_t count = 0;
    const FindingKind* kinds = FindingKinds(count);
    std::set<std::string> codes;
    for (std::size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(kinds[i].code);
        EXPECT_TRUE(codes.insert(kinds[i].code).second);
        EXPECT_NE(std::string(kinds[i].code).find('.'), std::string::npos);
        EXPECT_EQ(FindFindingKind(kinds[i].code), &kinds[i]);
    }
}
