#include "support/RiffBytes.h"
#include "support/WaveFixture.h"
#include "wave/BextChunk.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"
#include "wave/InfoChunk.h"
#include "wave/ListChunk.h"

#include <gtest/gtest.h>

using ListChunkRead = WaveFixture;

namespace {

const std::string kFormat = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Bytes();
const std::string kData = RiffBytes().Chunk("data", std::string(8, '\0')).Bytes();

std::string InfoEntry(std::string_view id, std::string_view text)
{
    return RiffBytes().Chunk(id, text).Bytes();
}

std::string List(std::string_view type, std::string_view body)
{
    return RiffBytes().Id("LIST").U32(static_cast<std::uint32_t>(body.size() + 4)).Id(type).Raw(body).Bytes();
}

} // namespace

TEST_F(ListChunkRead, SizesBelowFourWrapTheChildPastTheEnd)
{
    // Sizes 0 to 3 give the child nearly 4 GiB, which it skips: the fmt and
    // data behind the list are never seen. 4 gives an empty child, 5 a
    // child of one byte and a pad byte.
    for (std::uint32_t listSize = 0; listSize <= 5; ++listSize) {
        SCOPED_TRACE(listSize);
        std::string body = listSize == 5 ? std::string("x\0", 2) : std::string();
        std::string list = RiffBytes().Id("LIST").U32(listSize).Id("abcd").Raw(body).Bytes();
        ASSERT_TRUE(OpenBytes(Riff(list + kFormat + kData)));
        const Chunk& listChunk = *Root()->GetChildren().At(0);
        ASSERT_EQ(listChunk.GetChildren().Count(), 1u);
        const Chunk& child = *listChunk.GetChildren().At(0);
        EXPECT_EQ(child.GetId(), MakeFourCc("abcd"));
        EXPECT_EQ(child.GetSize(), static_cast<std::uint32_t>(listSize - 4));
        bool behindSeen = listSize >= 4;
        EXPECT_EQ(document.GetFormatChunk() != nullptr, behindSeen);
        EXPECT_EQ(document.GetDataChunk() != nullptr, behindSeen);
    }
}

TEST_F(ListChunkRead, AFileOfOneListIsReadWithoutRiff)
{
    ASSERT_TRUE(OpenBytes(List("INFO", InfoEntry("INAM", "take"))));
    EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);
    ASSERT_EQ(document.GetChunks().Count(), 1u);
    EXPECT_EQ(TopLevel(0).GetChildren().Count(), 1u);

    // Nothing but a LIST of size 3: the child skips past the end.
    ASSERT_TRUE(OpenBytes(RiffBytes().Id("LIST").U32(3).Id("abcd").Bytes()));
    EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);
}

TEST_F(ListChunkRead, InfoEntries)
{
    std::string entries = InfoEntry("INAM", "abcd\0") + InfoEntry("ICMT", "wxyz") + InfoEntry("INAM", "late");
    ASSERT_TRUE(OpenBytes(Riff(List("INFO", entries) + kFormat)));
    const auto* info = dynamic_cast<const InfoChunk*>(Root()->GetChildren().At(0)->GetChildren().At(0).get());
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->GetEntries().Count(), 2);
    EXPECT_EQ(info->GetEntries().GetRaw(u"INAM"), u"late") << "a repeated id keeps the later text";
    EXPECT_EQ(info->GetEntries().GetRaw(u"ICMT"), u"wxyz");
    EXPECT_NE(document.GetFormatChunk(), nullptr) << "the walk goes on behind the list";

    // An odd length keeps its zero byte, and the pad byte behind it is skipped.
    ASSERT_TRUE(OpenBytes(Riff(List("INFO", InfoEntry("INAM", std::string("abcd\0", 5)) + InfoEntry("ICMT", "wx")))));
    info = dynamic_cast<const InfoChunk*>(Root()->GetChildren().At(0)->GetChildren().At(0).get());
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->GetEntries().GetRaw(u"INAM").View(), std::u16string_view(u"abcd\0", 5));
    EXPECT_EQ(info->GetEntries().GetRaw(u"ICMT"), u"wx");
}

TEST_F(ListChunkRead, InfoFailures)
{
    // Without entries the child goes and the list stays.
    ASSERT_TRUE(OpenBytes(Riff(List("INFO", "") + kFormat)));
    EXPECT_TRUE(Root()->GetChildren().At(0)->GetChildren().IsEmpty());
    EXPECT_NE(document.GetFormatChunk(), nullptr);

    // An entry header cut short fails the child, not the list.
    ASSERT_TRUE(OpenBytes(Riff(List("INFO", InfoEntry("INAM", "ab") + "ICMT"))));
    EXPECT_TRUE(Root()->GetChildren().At(0)->GetChildren().IsEmpty());

    // A length of 0, or not below the list's size, gives up the rest of the
    // list and reads on behind it.
    for (std::uint32_t length : {0u, 12u, 13u}) {
        SCOPED_TRACE(length);
        std::string entries = RiffBytes().Id("INAM").U32(length).Raw("abcd").Bytes();
        ASSERT_TRUE(OpenBytes(Riff(List("INFO", entries) + kFormat)));
        EXPECT_TRUE(Root()->GetChildren().At(0)->GetChildren().IsEmpty());
        EXPECT_NE(document.GetFormatChunk(), nullptr);
    }
}

TEST_F(ListChunkRead, InfoOutsideAListReadsNothing)
{
    // Its size is unset, so its end lies before the stream: the next 4 bytes
    // are read as the next id, and the file is as sound as without it.
    ASSERT_TRUE(OpenBytes(Riff("INFO" + kFormat + kData)));
    EXPECT_EQ(Root()->GetChildren().Count(), 2u);
    EXPECT_NE(document.GetFormatChunk(), nullptr);
    EXPECT_NE(document.GetDataChunk(), nullptr);
}

TEST_F(ListChunkRead, InfoLengthNearFourGibReadsWhatTheFileHolds)
{
    // A list of size 3 gives the INFO child a size of nearly 4 GiB, so the
    // entry's length counts as below it and its text is read.
    std::string list = RiffBytes().Id("LIST").U32(3).Id("INFO").Id("INAM").U32(0xFFFFFFF0).Raw("short").Bytes();
    ASSERT_TRUE(OpenBytes(Riff(list)));
    EXPECT_TRUE(Root()->GetChildren().At(0)->GetChildren().IsEmpty()) << "the next entry header is cut short";

    WaveDocument fresh;
    ASSERT_TRUE(fresh.Open(dir.Write("list-only.wav", list)));
    EXPECT_EQ(fresh.GetContainerKind(), kContainerUnknown);
}

TEST_F(ListChunkRead, ListTypesOfOtherClasses)
{
    // "fmt " as a list type makes a format chunk of the list's body.
    ASSERT_TRUE(OpenBytes(Riff(List("fmt ", FormatBody(1, 1, 8000, 8)) + kData)));
    ASSERT_NE(document.GetFormatChunk(), nullptr);
    EXPECT_EQ(document.GetFormatChunk()->GetFormat().samplesPerSec, 8000u);

    // "data" and "RIFF" make plain chunks: no data slot, no change of kind.
    ASSERT_TRUE(OpenBytes(Riff(List("data", "abcd") + kFormat)));
    EXPECT_EQ(document.GetDataChunk(), nullptr);
    EXPECT_EQ(Root()->GetChildren().At(0)->GetChildren().At(0)->GetSize(), 4);

    // Outside RIFF the plain child fails before its body, and the body's
    // words then fail one by one.
    WaveDocument fresh;
    EXPECT_FALSE(fresh.Open(dir.Write("riff-list.wav", List("RIFF", "abcd"))));
    EXPECT_EQ(fresh.GetContainerKind(), kContainerUnknown);

    // "LIST" as a list type nests a list that reads its own size and type.
    // Its size and type are the 8 bytes behind the outer list's type.
    std::string nested = RiffBytes().Id("LIST").U32(18).Id("LIST").U32(6).Id("abcd").Raw("xy").Bytes();
    ASSERT_TRUE(OpenBytes(Riff(nested + kFormat)));
    const Chunk& inner = *Root()->GetChildren().At(0)->GetChildren().At(0);
    EXPECT_NE(dynamic_cast<const ListChunk*>(&inner), nullptr);
    ASSERT_EQ(inner.GetChildren().Count(), 1u);
    EXPECT_EQ(inner.GetChildren().At(0)->GetSize(), 2);
    EXPECT_NE(document.GetFormatChunk(), nullptr);
}

TEST_F(ListChunkRead, FileOfListWordsEndsAtTheNestingBound)
{
    // Every LIST reads the next LIST as its type and nests one level deeper;
    // beyond the bound the walk is abandoned.
    std::string words;
    for (int i = 0; i < 30000; ++i)
        words += "LIST";
    EXPECT_FALSE(OpenBytes(words));
    EXPECT_EQ(document.GetContainerKind(), kContainerUnknown);

    std::string shallow;
    for (int i = 0; i < 150; ++i)
        shallow += "LIST";
    EXPECT_TRUE(OpenBytes(shallow)) << "within the bound the innermost list fails, the others stand";
}

TEST_F(ListChunkRead, BextRecord)
{
    std::string record(602, 'r');
    ASSERT_TRUE(OpenBytes(Riff(RiffBytes().Chunk("bext", record).Bytes())));
    const auto* bext = dynamic_cast<const BextChunk*>(Root()->GetChildren().At(0).get());
    ASSERT_NE(bext, nullptr);
    EXPECT_EQ(bext->GetRecord()[601], 'r');
    EXPECT_EQ(bext->GetRecord()[602], 0);

    ASSERT_TRUE(OpenBytes(Riff(RiffBytes().Chunk("bext", std::string(1000, 'r')).Bytes())));
    bext = dynamic_cast<const BextChunk*>(Root()->GetChildren().At(0).get());
    ASSERT_NE(bext, nullptr);
    EXPECT_EQ(bext->GetRecord()[857], 'r') << "at most 858 bytes are copied";

    ASSERT_TRUE(OpenBytes(Riff(RiffBytes().Chunk("bext", std::string(1024, 'r')).Bytes())));
    bext = dynamic_cast<const BextChunk*>(Root()->GetChildren().At(0).get());
    ASSERT_NE(bext, nullptr);
    EXPECT_EQ(bext->GetRecord()[0], 0) << "a body that is not read in leaves the record zero";

    WaveDocument fresh;
    EXPECT_FALSE(fresh.Open(dir.Write("bext.wav", RiffBytes().Chunk("bext", "abcd").Bytes()))) << "no bext outside RIFF";
}
