#include "support/RiffBytes.h"
#include "support/TempDir.h"
#include "support/WaveFixture.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"
#include "wave/RootChunk.h"
#include "wave/WaveDocument.h"

#include <gtest/gtest.h>

using WaveDocumentOpen = WaveFixture;

namespace {

const std::string kFmt = FmtBytes(FormatBody(1, 2, 44100, 16));
const std::string kFmt8 = FmtBytes(FormatBody(1, 1, 8000, 8));
const std::string kData0 = RiffBytes().Id("data").U32(0).Bytes();

struct EdgeCase {
    const char* name;
    std::string bytes;
    const char* read;
};

} // namespace

// What the walk makes of the edges of the format: each file is read by a
// fresh document and described in one line (see WaveFixture::Describe).
// The walks that keep less of the tree give their users the same.
TEST_F(WaveDocumentOpen, EdgesOfTheFormat)
{
    const std::string children = kFmt8 + DataBytes("abcd");
    const EdgeCase cases[] = {
        {"empty", "", "ok unknown"},
        {"one byte", "R", "ok unknown"},
        {"three bytes", "RRR", "ok unknown"},
        {"sound", SoundWave(10), "ok riff RIFF/WAVE:76{fmt_:16 data:40} fmt=1/2/44100/16/4/0 data=40/10"},
        {"root of size 4 and nothing behind", RiffBytes().Head("RIFF", 4).Bytes(), "ok riff RIFF/WAVE:4"},
        {"another form type", Riff(RiffBytes().Chunk("abcd", "xy").Bytes(), "AVI "), "ok riff RIFF/AVI_:14{abcd:2}"},
        {"root larger than the file", RiffBytes().Head("RIFF", 100000).Raw(children).Bytes(),
         "ok riff RIFF/WAVE:100000{fmt_:16 data:4} fmt=1/1/8000/8/1/0 data=4/4"},
        // What lies beyond a root that is too small is read at top level.
        {"root smaller than its children", RiffBytes().Head("RIFF", 4).Raw(children).Bytes(),
         "ok riff RIFF/WAVE:4 fmt_:16 data:4 fmt=1/1/8000/8/1/0 data=4/4"},
        {"RIFF without size", "RIFF", "failed riff RIFF/WAVE:-1"},
        {"RIFF with cut size", "RIFF\x10\x00", "failed riff RIFF/WAVE:-1"},
        {"RIFF without form type", RiffBytes().Id("RIFF").U32(20).Bytes(), "failed riff RIFF/WAVE:20"},
        {"child body past the end", RiffBytes().Head("RIFF", 100).Id("abcd").U32(50).Raw("xyz").Bytes(), "ok riff RIFF/WAVE:100{abcd:50}"},
        {"child size cut short", RiffBytes().Head("RIFF", 100).Id("abcd").Raw("\x01\x00").Bytes(), "ok riff RIFF/WAVE:100"},
        {"child body not there at all", RiffBytes().Head("RIFF", 100).Id("abcd").U32(10).Bytes(), "ok riff RIFF/WAVE:100"},
        {"odd body without pad at the end", RiffBytes().Head("RIFF", 100).ChunkNoPad("abcd", "x").Bytes(), "ok riff RIFF/WAVE:100{abcd:1}"},
        {"large body skipped past the end", RiffBytes().Head("RIFF", 100).Id("abcd").U32(0xFFFFFFFF).Bytes(),
         "ok riff RIFF/WAVE:100{abcd:4294967295}"},
        // An odd chunk without its pad byte: the byte behind it is taken as
        // the pad, and the next id is read from the even position.
        {"missing pad byte", Riff(RiffBytes().ChunkNoPad("odd ", "abc").Raw("X").Raw(kFmt8).Bytes()),
         "ok riff RIFF/WAVE:40{odd_:3 fmt_:16} fmt=1/1/8000/8/1/0"},
        // Behind the RIFF chunk no pad step is taken: after an odd chunk the
        // next id is read from the pad byte on, and its size from "h\0\0\0".
        {"top level behind the root",
         RiffBytes().Raw(Riff("")).ChunkNoPad("abcd", "x").Raw(std::string_view("\0efgh", 5)).U32(0).Bytes(),
          "ok riff RIFF/WAVE:4 abcd:1 .efg:104"},
        {"top level size cut short", Riff("") + "abcd\x01", "failed riff RIFF/WAVE:4 abcd:-1"},
        // The registry keeps the last chunk made; one that fails inside the
        // root is dropped and takes its slot along, one at top level stays.
        {"two formats", Riff(kFmt8 + FmtBytes(FormatBody(3, 2, 48000, 32))),
         "ok riff RIFF/WAVE:52{fmt_:16 fmt_:16} fmt=3/2/48000/32/8/0"},
        {"second format fails", RiffBytes().Head("RIFF", 1000).Raw(kFmt8).Raw("fmt \x10").Bytes(), "ok riff RIFF/WAVE:1000{fmt_:16}"},
        {"format fails at top level", Riff(kFmt8) + "fmt ",
         "failed riff RIFF/WAVE:28{fmt_:16} fmt_:-1 fmt=0/0/0/0/0/0"},
        // Frames come from the block alignment; a data size of 0 takes the
        // file's length behind it, and ends the walk.
        {"data declared 0 with 1000 bytes behind", Riff(kFmt + kData0) + std::string(1000, 'z'),
         "ok riff RIFF/WAVE:36{fmt_:16 data:0} fmt=1/2/44100/16/4/0 data=0/250"},
        {"data of 3 bytes", Riff(kFmt + DataBytes("abc")),
         "ok riff RIFF/WAVE:40{fmt_:16 data:3} fmt=1/2/44100/16/4/0 data=3/1"},
        {"data before fmt", Riff(DataBytes(std::string(40, 'a')) + kFmt),
         "ok riff RIFF/WAVE:76{data:40 fmt_:16} fmt=1/2/44100/16/4/0 data=40/10"},
        {"data without fmt", Riff(DataBytes(std::string(40, 'a'))),
         "ok riff RIFF/WAVE:52{data:40} data=40/-1"},
        {"block align 0", Wave(FormatBodyAligned(1, 2, 44100, 16, 0), "abcd"),
         "ok riff RIFF/WAVE:40{fmt_:16 data:4} fmt=1/2/44100/16/0/0 data=4/-1"},
        {"large data skipped", Riff(kFmt + RiffBytes().Id("data").U32(4000).Bytes()) + std::string(4000, 'q'),
         "ok riff RIFF/WAVE:36{fmt_:16 data:4000} fmt=1/2/44100/16/4/0 data=4000/1000"},
        {"chunks behind data of size 0", Riff(kFmt + kData0 + kFmt8),
         "ok riff RIFF/WAVE:60{fmt_:16 data:0} fmt=1/2/44100/16/4/0 data=0/6"},
        // Not RIFF: every word fails as a chunk of its own, words of chunk
        // classes keep their slots, and RF64 is no RIFF.
        {"text", "this is not a wave file at all..", "failed unknown"},
        {"words of chunk classes", "abcdfmt efghdataijk", "failed unknown fmt_:-1 data:-1 fmt=0/0/0/0/0/0 data=-1/-1"},
        {"RF64", RiffBytes().Head("RF64", 0xFFFFFFFF).Chunk("ds64", std::string(28, '\0')).Bytes(),
         "failed unknown"},
        // A RIFF id at an offset divisible by 4 turns the kind to RIFF and
        // the walk goes on from there; at another offset it is never seen.
        {"RIFF behind 8 bytes", "junkjunk" + SoundWave(),
         "failed riff RIFF/WAVE:52{fmt_:16 data:16} fmt=1/2/44100/16/4/0 data=16/4"},
        {"RIFF behind 5 bytes", "junkj" + SoundWave(), "failed unknown"},
    };
    for (const EdgeCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Describe(c.bytes), c.read);
        const std::string registry = DescribeRegistry(c.bytes, TreeForm::Whole);
        EXPECT_EQ(DescribeRegistry(c.bytes, TreeForm::SlotsOnly), registry);
        EXPECT_EQ(DescribeRegistry(c.bytes, TreeForm::Compact), registry);
    }
}

TEST_F(WaveDocumentOpen, ReopeningKeepsTheKindAndDropsTheOldChunks)
{
    EXPECT_FALSE(document.Open(dir.PathOf("missing.wav")));
    EXPECT_EQ(Describe(document, false), "failed unknown");
    ASSERT_TRUE(OpenBytes(SoundWave()));
    EXPECT_TRUE(OpenBytes("abc"));
    EXPECT_EQ(Describe(document, true), "ok riff");
}

TEST_F(WaveDocumentOpen, FormatBodies)
{
    const EdgeCase cases[] = {
        {"16 bytes", FormatBody(1, 2, 44100, 16), "fmt=1/2/44100/16/4/0 pcm"},
        {"18 bytes", FormatBody(1, 1, 8000, 8) + "\x05\x00", "fmt=1/1/8000/8/1/5 pcm"},
        {"40 bytes extensible", FormatBody(0xFFFE, 2, 96000, 24) + std::string("\x16\x00", 2) + std::string(22, 'x'),
         "fmt=65534/2/96000/24/6/22 pcm"},
        {"float", FormatBody(3, 2, 48000, 32), "fmt=3/2/48000/32/8/0"},
        {"cut to 5 bytes", FormatBody(1, 2, 0x11223344, 16).substr(0, 5), "fmt=1/2/68/0/0/0 pcm"},
        {"1023 bytes", FormatBody(1, 2, 44100, 16) + std::string(1007, 'x'), "fmt=1/2/44100/16/4/30840 pcm"},
        // A body of 1024 bytes or more is not read in.
        {"1024 bytes", FormatBody(1, 2, 44100, 16) + std::string(1008, 'x'), "fmt=0/0/0/0/0/0"},
    };
    for (const EdgeCase& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(OpenBytes(Riff(FmtBytes(c.bytes))));
        const std::string read = Describe(document, true);
        EXPECT_EQ(read.substr(read.find(" fmt=") + 1) + (document.GetFormatChunk()->IsPcm() ? " pcm" : ""), c.read);
    }
}

// The words of a large file that is not RIFF are scanned in blocks; a RIFF
// id just behind a block edge must be found like any other.
TEST_F(WaveDocumentOpen, NonRiffScanMatchesAcrossBlockEdges)
{
    for (std::size_t junkWords : {65535u, 65536u, 65537u, 131072u}) {
        SCOPED_TRACE(junkWords);
        EXPECT_EQ(Describe(std::string(junkWords * 4, 'j') + SoundWave()),
                  "failed riff RIFF/WAVE:52{fmt_:16 data:16} fmt=1/2/44100/16/4/0 data=16/4");
    }
}

TEST_F(WaveDocumentOpen, NestingUpToTheBoundWalksAsUsualAndBeyondItEndsTheWalk)
{
    // RIFF in RIFF, 100 levels deep, with a sound format and data innermost.
    const std::string inner = kFmt + DataBytes("abcd");
    std::string nested = inner;
    for (int level = 0; level < 100; ++level)
        nested = Riff(nested);
    EXPECT_TRUE(OpenBytes(nested));
    ASSERT_NE(document.GetDataChunk(), nullptr);
    EXPECT_EQ(document.GetDataChunk()->GetFrameCount(), 1);

    const int levels = 100000;
    RiffBytes deep;
    for (int level = 0; level < levels; ++level)
        deep.Head("RIFF", static_cast<std::uint32_t>(inner.size() + 4 + 12 * (levels - 1 - level)));
    deep.Raw(inner);
    EXPECT_FALSE(OpenBytes(deep.Bytes()));
    EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
    EXPECT_EQ(document.GetDataChunk(), nullptr);
    EXPECT_EQ(DescribeRegistry(deep.Bytes(), TreeForm::SlotsOnly), "failed riff");
}
