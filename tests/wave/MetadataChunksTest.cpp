#include "support/RiffBytes.h"
#include "wave/BextFields.h"
#include "wave/CuePoints.h"
#include "wave/IxmlFields.h"
#include "wave/ListEntries.h"
#include "wave/SamplerFields.h"

#include <gtest/gtest.h>

namespace {

BodySpan Span(const std::string& bytes)
{
    return BodySpan(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

std::string Text(BodySpan bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

} // namespace

// The parsers of metadata bodies on the edges of their layouts: counts that
// claim more than the body holds, bodies cut short, an entry past its list,
// pad bytes.
TEST(MetadataChunks, CountsAndBodiesCutShortReadWhatIsThere)
{
    // Entries: an odd one with its pad, then one whose size runs past the list.
    const std::string list = RiffBytes().Chunk("INAM", "abc").Id("ICMT").U32(10).Raw("xyz").Bytes();
    const std::vector<ListEntry> entries = ReadListEntries(Span(list), 100);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].offset, 100);
    EXPECT_EQ(Text(entries[0].body), "abc");
    EXPECT_EQ(entries[1].offset, 112);
    EXPECT_EQ(entries[1].id, "ICMT");
    EXPECT_EQ(Text(entries[1].body), "xyz");
    EXPECT_TRUE(ReadListEntries(Span("INAM\x02"), 0).empty());

    // Three points counted, the second cut inside.
    const std::string cue = RiffBytes().U32(3).U32(7).U32(1).Id("data").U32(0).U32(0).U32(5).U32(8).U32(2).Bytes();
    const std::vector<CuePoint> points = ReadCuePoints(Span(cue));
    ASSERT_EQ(points.size(), 1u);
    EXPECT_EQ(points[0].id, 7u);
    EXPECT_EQ(points[0].sampleOffset, 5u);

    // Two loops counted, one held.
    RiffBytes smpl;
    smpl.U32(1).U32(2).U32(3).U32(61).U32(0).U32(0).U32(0).U32(2).U32(0).U32(9).U32(1).U32(10).U32(20).U32(0).U32(3);
    const SamplerFields sampler = ReadSamplerFields(Span(smpl.Bytes()));
    EXPECT_EQ(sampler.unityNote, 61u);
    EXPECT_EQ(sampler.loopCount, 2u);
    ASSERT_EQ(sampler.loops.size(), 1u);
    EXPECT_EQ(sampler.loops[0].cuePointId, 9u);
    EXPECT_EQ(sampler.loops[0].end, 20u);
    EXPECT_EQ(sampler.loops[0].playCount, 3u);

    // A bext of 400 bytes: texts to their zero byte, the version, a basic
    // UMID (nothing in its second half), loudness read as 0, no history.
    std::string bext(400, '\0');
    bext.replace(0, 5, "take1");
    bext.replace(320, 10, "2024-05-06");
    bext[338] = 0x10;
    bext[346] = 2;
    bext[348] = 0x06;
    const BextFields fields = ReadBextFields(Span(bext));
    EXPECT_EQ(Text(fields.description), "take1");
    EXPECT_EQ(Text(fields.originationDate), "2024-05-06");
    EXPECT_EQ(fields.timeReference, 0x10u);
    EXPECT_EQ(fields.version, 2);
    EXPECT_EQ(fields.umid.size(), 32u);
    EXPECT_EQ(fields.loudnessValue, 0);
    EXPECT_TRUE(fields.codingHistory.empty());

    // iXML: the first element of a name, blanks trimmed; none for one
    // missing or never closed.
    const IxmlFields ixml = ReadIxmlFields(Span("<X><FILE_SAMPLE_RATE> 48000\n</FILE_SAMPLE_RATE><TIMECODE_RATE>25"));
    EXPECT_EQ(ixml.fileSampleRate.value_or("-"), "48000");
    EXPECT_EQ(IxmlNumber(ixml.fileSampleRate).value_or(0), 48000u);
    EXPECT_FALSE(ixml.timecodeRate);
    EXPECT_FALSE(ixml.timecodeFlag);
}
