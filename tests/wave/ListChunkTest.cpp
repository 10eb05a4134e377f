#include "support/RiffBytes.h"
#include "support/WaveFixture.h"
#include "wave/BextChunk.h"

#include <gtest/gtest.h>

using ListChunkRead = WaveFixture;

namespace {

const std::string kFormat = FmtBytes(FormatBody(1, 2, 44100, 16));
const std::string kData = DataBytes(std::string(8, '\0'));

std::string Entry(std::string_view id, std::string_view text)
{
    return RiffBytes().Chunk(id, text).Bytes();
}

// An INAM entry whose length field says length, whatever follows.
std::string EntryOfLength(std::uint32_t length, std::string_view text)
{
    return RiffBytes().Id("INAM").U32(length).Raw(text).Bytes();
}

// A list whose size field says size, whatever follows.
std::string ListOfSize(std::uint32_t size, std::string_view type, std::string_view body = "")
{
    return RiffBytes().Head("LIST", size, type).Raw(body).Bytes();
}

struct Case {
    const char* name;
    std::string bytes;
    const char* read;
};

} // namespace

// Lists, their INFO entries and list types of other classes, each read by a
// fresh document and described in one line (see WaveFixture::Describe).
TEST_F(ListChunkRead, ListsAndInfoEntries)
{
    const std::string behind = kFormat + kData;
    const Case cases[] = {
        // Sizes 0 to 3 give the child nearly 4 GiB, which it skips: the fmt
        // and data behind the list are never seen. 4 gives an empty child, 5
        // a child of one byte and a pad byte.
        {"size 0", Riff(ListOfSize(0, "abcd") + behind), "ok riff RIFF/WAVE:56{LIST:0{abcd:4294967292}}"},
        {"size 3", Riff(ListOfSize(3, "abcd") + behind), "ok riff RIFF/WAVE:56{LIST:3{abcd:4294967295}}"},
        {"size 4", Riff(ListOfSize(4, "abcd") + behind),
         "ok riff RIFF/WAVE:56{LIST:4{abcd:0} fmt_:16 data:8} fmt=1/2/44100/16/4/0 data=8/2"},
        {"size 5", Riff(ListOfSize(5, "abcd", std::string_view("x\0", 2)) + behind),
         "ok riff RIFF/WAVE:58{LIST:5{abcd:1} fmt_:16 data:8} fmt=1/2/44100/16/4/0 data=8/2"},
        {"a file of one list", ListBytes("INFO", Entry("INAM", "take")), "ok unknown LIST:16{INFO:12 INAM=take}"},
        {"a file of one list of size 3", ListOfSize(3, "abcd"), "ok unknown"},
        // A repeated id keeps the later text; the walk goes on behind the list.
        {"entries", Riff(ListBytes("INFO", Entry("INAM", "abcd") + Entry("ICMT", "wxyz") + Entry("INAM", "late")) + kFormat),
         "ok riff RIFF/WAVE:76{LIST:40{INFO:36 ICMT=wxyz INAM=late} fmt_:16} fmt=1/2/44100/16/4/0"},
        // An odd length keeps its zero byte, and the pad byte behind it is skipped.
        {"odd entry", Riff(ListBytes("INFO", Entry("INAM", std::string("abcd\0", 5)) + Entry("ICMT", "wx"))),
         "ok riff RIFF/WAVE:40{LIST:28{INFO:24 ICMT=wx INAM=abcd.}}"},
        // Without entries, or with an entry header cut short, the child goes
        // and the list stays.
        {"no entries", Riff(ListBytes("INFO", "") + kFormat), "ok riff RIFF/WAVE:40{LIST:4 fmt_:16} fmt=1/2/44100/16/4/0"},
        {"entry header cut short", Riff(ListBytes("INFO", Entry("INAM", "ab") + "ICMT")), "ok riff RIFF/WAVE:30{LIST:18}"},
        // A length of 0, or not below the list's size, gives up the rest of
        // the list and reads on behind it.
        {"entry length 0", Riff(ListBytes("INFO", EntryOfLength(0, "abcd")) + kFormat),
         "ok riff RIFF/WAVE:52{LIST:16 fmt_:16} fmt=1/2/44100/16/4/0"},
        {"entry length 12", Riff(ListBytes("INFO", EntryOfLength(12, "abcd")) + kFormat),
         "ok riff RIFF/WAVE:52{LIST:16 fmt_:16} fmt=1/2/44100/16/4/0"},
        {"entry length 13", Riff(ListBytes("INFO", EntryOfLength(13, "abcd")) + kFormat),
         "ok riff RIFF/WAVE:52{LIST:16 fmt_:16} fmt=1/2/44100/16/4/0"},
        // Outside a list INFO's size is unset, so its end lies before the
        // stream: the next 4 bytes are read as the next id.
        {"INFO outside a list", Riff("INFO" + behind),
         "ok riff RIFF/WAVE:48{fmt_:16 data:8} fmt=1/2/44100/16/4/0 data=8/2"},
        // A list of size 3 gives INFO nearly 4 GiB, so the entry's length
        // counts as below it and its text is read; the next header is cut.
        {"entry length near 4 GiB", Riff(ListOfSize(3, "INFO", EntryOfLength(0xFFFFFFF0, "short"))),
         "ok riff RIFF/WAVE:29{LIST:3}"},
        {"entry length near 4 GiB without RIFF", ListOfSize(3, "INFO", EntryOfLength(0xFFFFFFF0, "short")),
         "ok unknown"},
        // "fmt " as a list type makes a format chunk of the list's body;
        // "data" and "RIFF" make plain chunks: no data slot, no change of
        // kind. Outside RIFF the plain child fails before its body, and the
        // body's words then fail one by one.
        {"fmt list", Riff(ListBytes("fmt ", FormatBody(1, 1, 8000, 8)) + kData),
         "ok riff RIFF/WAVE:48{LIST:20{fmt_:16} data:8} fmt=1/1/8000/8/1/0 data=8/8"},
        {"data list", Riff(ListBytes("data", "abcd") + kFormat),
         "ok riff RIFF/WAVE:44{LIST:8{data:4} fmt_:16} fmt=1/2/44100/16/4/0"},
        {"RIFF list alone", ListBytes("RIFF", "abcd"), "failed unknown"},
        // "LIST" as a list type nests a list that reads its own size and
        // type: the 8 bytes behind the outer list's type.
        {"nested list", Riff(ListOfSize(18, "LIST", RiffBytes().U32(6).Id("abcd").Raw("xy").Bytes()) + kFormat),
         "ok riff RIFF/WAVE:50{LIST:18{LIST:6{abcd:2}} fmt_:16} fmt=1/2/44100/16/4/0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Describe(c.bytes), c.read);
    }
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
    EXPECT_TRUE(OpenBytes(words.substr(0, 600))) << "within the bound the innermost list fails, the others stand";
}

TEST_F(ListChunkRead, BextRecord)
{
    // At most 858 bytes are copied; a body that is not read in leaves the
    // record zero.
    const struct {
        std::size_t size, index;
        std::uint8_t byte;
    } cases[] = {{602, 601, 'r'}, {602, 602, 0}, {1000, 857, 'r'}, {1024, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        ASSERT_TRUE(OpenBytes(Riff(RiffBytes().Chunk("bext", std::string(c.size, 'r')).Bytes())));
        const auto* bext = dynamic_cast<const BextChunk*>(Root()->GetChildren().At(0).get());
        ASSERT_NE(bext, nullptr);
        EXPECT_EQ(bext->GetRecord()[c.index], c.byte);
    }
    EXPECT_EQ(Describe(RiffBytes().Chunk("bext", "abcd").Bytes()), "failed unknown bext:-1") << "no bext outside RIFF";
}
