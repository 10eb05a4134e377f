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

TEST_F(WaveDocumentOpen, EmptyAndTinyFilesReadNoChunk)
{
    for (std::size_t length : {0, 1, 3}) {
        SCOPED_TRACE(length);
        EXPECT_TRUE(OpenBytes(std::string(length, 'R')));
        EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);
        EXPECT_TRUE(document.GetChunks().IsEmpty());
        EXPECT_EQ(document.GetFormatChunk(), nullptr);
        EXPECT_EQ(document.GetDataChunk(), nullptr);
    }
}

TEST_F(WaveDocumentOpen, MissingFileFailsWithKindZero)
{
    EXPECT_FALSE(document.Open(dir.PathOf("missing.wav")));
    EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);
}

TEST_F(WaveDocumentOpen, SoundFileFillsTheRegistry)
{
    ASSERT_TRUE(OpenBytes(SoundWave(10)));
    EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
    ASSERT_EQ(document.GetChunks().Count(), 1u);
    ASSERT_NE(Root(), nullptr);
    EXPECT_EQ(Root()->GetFormType(), kIdWave);
    EXPECT_EQ(Root()->GetChildren().Count(), 2u);
    ASSERT_NE(document.GetFormatChunk(), nullptr);
    WaveFormat format = document.GetFormatChunk()->GetFormat();
    EXPECT_EQ(format.formatTag, 1);
    EXPECT_EQ(format.channels, 2);
    EXPECT_EQ(format.samplesPerSec, 44100u);
    EXPECT_EQ(format.bitsPerSample, 16);
    EXPECT_EQ(format.blockAlign, 4);
    ASSERT_NE(document.GetDataChunk(), nullptr);
    EXPECT_EQ(document.GetDataChunk()->GetSize(), 40);
    EXPECT_EQ(document.GetDataChunk()->GetFrameCount(), 10);
    EXPECT_EQ(document.GetDataChunk()->GetPosition(), 36);
}

TEST_F(WaveDocumentOpen, RootSizesAndFormTypes)
{
    // Size 4 and nothing behind: the form type is read and no child exists.
    EXPECT_TRUE(OpenBytes(RiffBytes().Id("RIFF").U32(4).Id("WAVE").Bytes()));
    EXPECT_TRUE(Root()->GetChildren().IsEmpty());

    // A form type other than WAVE is no error.
    EXPECT_TRUE(OpenBytes(Riff(RiffBytes().Chunk("abcd", "xy").Bytes(), "AVI ")));
    EXPECT_EQ(Root()->GetFormType(), MakeFourCc("AVI "));
    EXPECT_EQ(Root()->GetChildren().Count(), 1u);

    // A size larger than the file: all real children are there.
    std::string children = RiffBytes().Chunk("fmt ", FormatBody(1, 1, 8000, 8)).Chunk("data", "abcd").Bytes();
    EXPECT_TRUE(OpenBytes(RiffBytes().Id("RIFF").U32(100000).Id("WAVE").Raw(children).Bytes()));
    EXPECT_EQ(Root()->GetChildren().Count(), 2u);

    // A size smaller than the real extent: what lies beyond becomes top level
    // and still reaches the registry.
    EXPECT_TRUE(OpenBytes(RiffBytes().Id("RIFF").U32(4).Id("WAVE").Raw(children).Bytes()));
    EXPECT_EQ(document.GetChunks().Count(), 3u);
    EXPECT_NE(document.GetFormatChunk(), nullptr);
    EXPECT_NE(document.GetDataChunk(), nullptr);
    EXPECT_EQ(document.GetDataChunk()->GetFrameCount(), 4);
}

TEST_F(WaveDocumentOpen, CutHeadersAndBodies)
{
    struct Case {
        const char* name;
        std::string bytes;
        bool result;
        std::size_t children;
    } cases[] = {
        {"RIFF without size", "RIFF", false, 0},
        {"RIFF with cut size", "RIFF\x10\x00", false, 0},
        {"RIFF without form type", RiffBytes().Id("RIFF").U32(20).Bytes(), false, 0},
        {"child body past the end", RiffBytes().Id("RIFF").U32(100).Id("WAVE").Id("abcd").U32(50).Raw("xyz").Bytes(),
         true, 1},
        {"child size cut short", RiffBytes().Id("RIFF").U32(100).Id("WAVE").Id("abcd").Raw("\x01\x00").Bytes(), true,
         0},
        {"odd body without pad at the end", RiffBytes().Id("RIFF").U32(100).Id("WAVE").ChunkNoPad("abcd", "x").Bytes(),
         true, 1},
        {"large body skipped past the end",
         RiffBytes().Id("RIFF").U32(100).Id("WAVE").Id("abcd").U32(0xFFFFFFFF).Bytes(), true, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(OpenBytes(c.bytes), c.result);
        EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
        ASSERT_EQ(document.GetChunks().Count(), 1u);
        EXPECT_EQ(document.GetChunks().At(0)->GetChildren().Count(), c.children);
    }
}

TEST_F(WaveDocumentOpen, TopLevelBehindTheRiffChunk)
{
    // Behind the end of the RIFF chunk the loop takes no pad step: after an
    // odd chunk the next id is read from the pad byte on.
    std::string bytes = RiffBytes().Raw(Riff("")).ChunkNoPad("abcd", "x").Raw(std::string_view("\0efgh", 5)).Bytes();
    bytes += RiffBytes().U32(0).Bytes();
    // "\0efg" is read as an id, its size is "h\0\0\0" (104 bytes, past the end).
    EXPECT_TRUE(OpenBytes(bytes));
    ASSERT_EQ(document.GetChunks().Count(), 3u);
    EXPECT_EQ(document.GetChunks().At(2)->GetId(), MakeFourCc("\0efg"));
    EXPECT_EQ(document.GetChunks().At(2)->GetSize(), 'h');

    // A chunk there whose size field is cut short fails the walk.
    EXPECT_FALSE(OpenBytes(Riff("") + "abcd\x01"));
    EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
}

TEST_F(WaveDocumentOpen, PadByteIsSkippedByPosition)
{
    // An odd chunk without its pad byte: the byte behind it is taken as the
    // pad, and the next id is read from the even position.
    std::string children = RiffBytes().ChunkNoPad("odd ", "abc").Raw("X").Chunk("fmt ", FormatBody(1, 1, 8000, 8)).Bytes();
    ASSERT_TRUE(OpenBytes(Riff(children)));
    ASSERT_EQ(Root()->GetChildren().Count(), 2u);
    EXPECT_EQ(Root()->GetChildren().At(1)->GetPosition(), 24);
    EXPECT_NE(document.GetFormatChunk(), nullptr);
}

TEST_F(WaveDocumentOpen, RegistryKeepsTheLastMadeChunk)
{
    std::string first = FormatBody(1, 1, 8000, 8);
    std::string second = FormatBody(3, 2, 48000, 32);
    ASSERT_TRUE(OpenBytes(Riff(RiffBytes().Chunk("fmt ", first).Chunk("fmt ", second).Bytes())));
    EXPECT_EQ(document.GetFormatChunk()->GetFormat().formatTag, 3);

    // The second one fails to read: the slot is empty although the first is
    // in the tree.
    std::string failing = RiffBytes().Id("RIFF").U32(1000).Id("WAVE").Chunk("fmt ", first).Raw("fmt \x10").Bytes();
    EXPECT_TRUE(OpenBytes(failing));
    EXPECT_EQ(document.GetFormatChunk(), nullptr);
    EXPECT_EQ(Root()->GetChildren().Count(), 1u);

    // At top level a chunk that failed stays in the list, and in its slot.
    EXPECT_FALSE(OpenBytes(Riff(RiffBytes().Chunk("fmt ", first).Bytes()) + "fmt "));
    ASSERT_NE(document.GetFormatChunk(), nullptr);
    EXPECT_EQ(document.GetFormatChunk()->GetFormat().formatTag, 0);
    EXPECT_EQ(document.GetChunks().Count(), 2u);
}

TEST_F(WaveDocumentOpen, SecondOpenKeepsTheContainerKind)
{
    ASSERT_TRUE(OpenBytes(SoundWave()));
    EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
    EXPECT_TRUE(OpenBytes("abc"));
    EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
    EXPECT_TRUE(document.GetChunks().IsEmpty());
    EXPECT_EQ(document.GetFormatChunk(), nullptr) << "the old chunks are gone";
    EXPECT_EQ(document.GetDataChunk(), nullptr);
}

TEST_F(WaveDocumentOpen, FormatBodies)
{
    struct Case {
        const char* name;
        std::string body;
        std::uint16_t tag, channels, bits, extra;
        std::uint32_t rate;
        bool pcm;
    } cases[] = {
        {"16 bytes", FormatBody(1, 2, 44100, 16), 1, 2, 16, 0, 44100, true},
        {"18 bytes", FormatBody(1, 1, 8000, 8) + "\x05\x00", 1, 1, 8, 5, 8000, true},
        {"40 bytes extensible", FormatBody(0xFFFE, 2, 96000, 24) + std::string("\x16\x00", 2) + std::string(22, 'x'),
         0xFFFE, 2, 24, 22, 96000, true},
        {"float", FormatBody(3, 2, 48000, 32), 3, 2, 32, 0, 48000, false},
        {"cut to 5 bytes", FormatBody(1, 2, 0x11223344, 16).substr(0, 5), 1, 2, 0, 0, 0x44, true},
        {"1023 bytes", FormatBody(1, 2, 44100, 16) + std::string(1007, 'x'), 1, 2, 16, 0x7878, 44100, true},
        {"1024 bytes", FormatBody(1, 2, 44100, 16) + std::string(1008, 'x'), 0, 0, 0, 0, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(OpenBytes(Riff(RiffBytes().Chunk("fmt ", c.body).Bytes())));
        const FormatChunk* chunk = document.GetFormatChunk();
        ASSERT_NE(chunk, nullptr);
        WaveFormat format = chunk->GetFormat();
        EXPECT_EQ(format.formatTag, c.tag);
        EXPECT_EQ(format.channels, c.channels);
        EXPECT_EQ(format.samplesPerSec, c.rate);
        EXPECT_EQ(format.bitsPerSample, c.bits);
        EXPECT_EQ(format.extraSize, c.extra);
        EXPECT_EQ(chunk->IsPcm(), c.pcm);
    }
}

TEST_F(WaveDocumentOpen, FrameCounts)
{
    const std::string fmt4 = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Bytes();
    struct Case {
        const char* name;
        std::string bytes;
        std::int64_t size, frames;
    } cases[] = {
        {"declared 0 with 1000 bytes behind", Riff(fmt4 + RiffBytes().Id("data").U32(0).Bytes()) + std::string(1000, 'z'), 0, 250},
        {"3 bytes, frames by the file's length", Riff(fmt4 + RiffBytes().Chunk("data", "abc").Bytes()), 3, 1},
        {"data before fmt", Riff(RiffBytes().Chunk("data", std::string(40, 'a')).Bytes() + fmt4), 40, 10},
        {"no fmt", Riff(RiffBytes().Chunk("data", std::string(40, 'a')).Bytes()), 40, -1},
        {"block align 0",
         Riff(RiffBytes().Chunk("fmt ", FormatBodyAligned(1, 2, 44100, 16, 0)).Chunk("data", "abcd").Bytes()), 4, -1},
        {"large data skipped", Riff(fmt4 + RiffBytes().Id("data").U32(4000).Bytes()) + std::string(4000, 'q'), 4000, 1000},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        OpenBytes(c.bytes);
        ASSERT_NE(document.GetDataChunk(), nullptr);
        EXPECT_EQ(document.GetDataChunk()->GetSize(), c.size);
        EXPECT_EQ(document.GetDataChunk()->GetFrameCount(), c.frames);
    }
}

TEST_F(WaveDocumentOpen, DataOfSizeZeroEndsTheWalk)
{
    std::string children = RiffBytes()
                               .Chunk("fmt ", FormatBody(1, 2, 44100, 16))
                               .Id("data")
                               .U32(0)
                               .Chunk("fmt ", FormatBody(3, 1, 8000, 8))
                               .Bytes();
    ASSERT_TRUE(OpenBytes(Riff(children)));
    EXPECT_EQ(Root()->GetChildren().Count(), 2u) << "the chunk behind it is not seen";
    EXPECT_EQ(document.GetFormatChunk()->GetFormat().formatTag, 1);
}

TEST_F(WaveDocumentOpen, FileThatIsNotRiff)
{
    // Every word fails as a chunk of its own; the result is false, kind 0.
    EXPECT_FALSE(OpenBytes("this is not a wave file at all.."));
    EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);

    // Words of chunk classes fail as well and keep their registry slots.
    EXPECT_FALSE(OpenBytes("abcdfmt efghdataijk"));
    EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);
    ASSERT_NE(document.GetFormatChunk(), nullptr);
    ASSERT_NE(document.GetDataChunk(), nullptr);
    EXPECT_EQ(document.GetDataChunk()->GetSize(), -1);
    EXPECT_EQ(document.GetFormatChunk()->GetFormat().formatTag, 0);

    // RF64 is no RIFF.
    EXPECT_FALSE(OpenBytes(RiffBytes().Id("RF64").U32(0xFFFFFFFF).Id("WAVE").Chunk("ds64", std::string(28, '\0')).Bytes()));
    EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);
}

TEST_F(WaveDocumentOpen, RiffAtALaterAlignedOffset)
{
    // A RIFF id at an offset divisible by 4 turns the kind to 1 and the walk
    // goes on normally from there; at another offset it is never seen.
    EXPECT_FALSE(OpenBytes("junkjunk" + SoundWave()));
    EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
    ASSERT_NE(document.GetDataChunk(), nullptr);
    EXPECT_EQ(document.GetDataChunk()->GetFrameCount(), 4);

    WaveDocument other;
    EXPECT_FALSE(other.Open(dir.Write("b.wav", "junkj" + SoundWave())));
    EXPECT_EQ(other.GetContainerKind(), kContainerUnknown);
}

TEST_F(WaveDocumentOpen, NonRiffScanMatchesAcrossBlockEdges)
{
    // The words of a large file that is not RIFF are scanned in blocks; a
    // RIFF id just behind a block edge must be found like any other.
    for (std::size_t junkWords : {65535u, 65536u, 65537u, 131072u}) {
        SCOPED_TRACE(junkWords);
        WaveDocument fresh;
        std::string bytes(junkWords * 4, 'j');
        EXPECT_FALSE(fresh.Open(dir.Write("scan.wav", bytes + SoundWave())));
        EXPECT_EQ(fresh.GetContainerKind(), kContainerRiff);
        ASSERT_NE(fresh.GetDataChunk(), nullptr);
        EXPECT_EQ(fresh.GetDataChunk()->GetFrameCount(), 4);
        EXPECT_LE(fresh.GetChunks().Count(), 2u) << "failed words are not kept";
    }
}

TEST_F(WaveDocumentOpen, NestingUpToTheBoundWalksAsUsual)
{
    // RIFF in RIFF, 100 levels deep, with a sound format and data innermost.
    std::string inner = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Chunk("data", "abcd").Bytes();
    for (int level = 0; level < 100; ++level)
        inner = Riff(inner);
    EXPECT_TRUE(OpenBytes(inner));
    ASSERT_NE(document.GetDataChunk(), nullptr);
    EXPECT_EQ(document.GetDataChunk()->GetFrameCount(), 1);
}

TEST_F(WaveDocumentOpen, NestingBeyondTheBoundEndsTheWalk)
{
    const std::string inner = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Chunk("data", "abcd").Bytes();
    const int levels = 100000;
    RiffBytes bytes;
    for (int level = 0; level < levels; ++level)
        bytes.Id("RIFF").U32(static_cast<std::uint32_t>(inner.size() + 4 + 12 * (levels - 1 - level))).Id("WAVE");
    bytes.Raw(inner);
    EXPECT_FALSE(OpenBytes(bytes.Bytes()));
    EXPECT_EQ(document.GetContainerKind(), kContainerRiff);
    EXPECT_EQ(document.GetDataChunk(), nullptr);
}
