#include "base/Utf8.h"
#include "layouttext/LayoutDocument.h"
#include "support/RiffBytes.h"
#include "support/WaveFixture.h"
#include "wave/FourCc.h"

#include <gtest/gtest.h>

namespace {

class Writer : public WaveFixture {
protected:
    // Writes the first top-level chunk of the document to a new file, in
    // plain or aligned mode, and gives its bytes.
    std::string WriteOut(bool aligned, bool& result)
    {
        const std::string name = "out" + std::to_string(outputs++) + ".wav";
        FileStream target;
        EXPECT_TRUE(target.CreateNew(dir.PathOf(name), aligned));
        result = document.GetChunks().At(0)->Write(target);
        target.Close();
        return dir.Read(name);
    }
    int outputs = 0;
};

} // namespace

// What goes out for what was read: bodies copied in pieces of 2048 bytes
// (5000 is 2048 + 2048 + 904), an odd body padded while its size stays odd,
// a format always of 18 bytes, a list byte for byte, and a source that ends
// before its declared size copied as far as it goes, with false and the
// size field holding what was copied. Aligned mode writes the same bytes,
// and so does a tree read in compact form, whose small chunks go out
// gathered in runs.
TEST_F(Writer, CopiesEachChunkAsTheRulesSay)
{
    const std::string fmt16 = FmtBytes(FormatBody(1, 2, 44100, 16));
    const std::string fmt18 = FmtBytes(FormatBody(1, 2, 44100, 16) + std::string(2, '\0'));
    const std::string fmt40 = FmtBytes(FormatBody(0xFFFE, 2, 44100, 16) + std::string(24, 'x'));
    const std::string list = RiffBytes().Head("LIST", 16, "INFO").Chunk("INAM", "take\0").Bytes();
    std::string body5000(5000, 'a');
    body5000[2047] = 'b';
    body5000[4999] = 'z';
    // Over 64 KiB of small chunks in more than one run, odd and even, with a
    // body too large to gather between them.
    RiffBytes many;
    for (int i = 0; i < 9000; ++i)
        many.Chunk(i % 2 ? "odd " : "even", i % 2 ? "abc" : "abcd").Raw(i == 5000 ? RiffBytes().Chunk("big ", body5000).Bytes() : "");
    const struct {
        const char* what;
        std::string input, output;
        bool result;
    } cases[] = {
        {"5000", Riff(fmt16 + DataBytes(body5000)), Riff(fmt18 + DataBytes(body5000)), true},
        {"2048", Riff(fmt18 + DataBytes(std::string(2048, 'd'))), Riff(fmt18 + DataBytes(std::string(2048, 'd'))), true},
        {"odd", Riff(RiffBytes().Chunk("odd ", "xyz").Raw(fmt18).Bytes()), Riff(RiffBytes().Chunk("odd ", "xyz").Raw(fmt18).Bytes()), true},
        {"format 40, list", Riff(fmt40 + list), Riff(FmtBytes(FormatBody(0xFFFE, 2, 44100, 16) + "xx") + list), true},
        {"short source", Riff(fmt18 + RiffBytes().ChunkWithSize("data", 3000, std::string(2500, 's')).Bytes()),
         RiffBytes().Head("RIFF", 4 + 26 + 8 + 2500).Raw(fmt18).Chunk("data", std::string(2500, 's')).Bytes(),
         false},
        {"data without format", Riff(DataBytes("abcd")), Riff(""), false},
        {"small chunk cut short", Riff(fmt18 + RiffBytes().Chunk("odd ", "x").ChunkWithSize("abcd", 3000, "xyz").Bytes()),
         RiffBytes().Head("RIFF", 4 + 26 + 10 + 12).Raw(fmt18).Chunk("odd ", "x").Chunk("abcd", "xyz").Bytes(),
         false},
        {"many small chunks and a large one", Riff(fmt18 + many.Bytes()), Riff(fmt18 + many.Bytes()), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (TreeForm form : {TreeForm::Whole, TreeForm::Compact}) {
            document.SetTreeForm(form);
            OpenBytes(c.input);
            for (bool aligned : {false, true}) {
                bool result = false;
                EXPECT_EQ(WriteOut(aligned, result), c.output)
                    << (aligned ? "aligned" : "plain") << (form == TreeForm::Compact ? ", compact" : "");
                EXPECT_EQ(result, c.result);
            }
        }
    }
}

// A description makes a tree through the factory; the names and values act
// as the chunk classes take them.
TEST_F(Writer, DescriptionMakesATreeThatWritesOut)
{
    LayoutDocument sections;
    ASSERT_TRUE(sections.Parse(WideString(u"[Riff]\r\nType=Wave\r\n[Format]\r\nFormat=PCM\r\nCh=2\r\nBit=16\r\n"
                                          u"Freq=44100\r\n[Data]\r\n[Unknown]\r\n")));
    std::unique_ptr<Chunk> root;
    ASSERT_TRUE(document.CreateChunk(ChunkIdFromName(WideString(u"Riff")), root));
    ASSERT_TRUE(root->LoadDescription(sections));
    EXPECT_EQ(sections.GetSectionCount(), 0);
    EXPECT_EQ(Tree(*root), "RIFF/WAVE:-1{fmt_:-1 data:-1 ....:-1}");
    ASSERT_NE(document.GetFormatChunk(), nullptr);
    const WaveFormat format = document.GetFormatChunk()->GetFormat();
    EXPECT_EQ(format.blockAlign, 4);
    EXPECT_EQ(format.avgBytesPerSec, 176400u);

    FileStream target;
    ASSERT_TRUE(target.CreateNew(dir.PathOf("described.wav"), false));
    EXPECT_TRUE(root->Write(target));
    EXPECT_EQ(target.GetSize(), 4 + 4 + 4 + 26 + 8 + 8);
    target.Close();
    EXPECT_EQ(Describe(dir.Read("described.wav")), "ok riff RIFF/WAVE:46{fmt_:18 data:0} fmt=1/2/44100/16/4/0 data=0/2");

    // SetAttribute: true only for a change; the numbers need a RIFF
    // document, Format=PCM doesn't.
    FormatChunk& chunk = *document.GetFormatChunk();
    const struct {
        const char16_t *name, *value;
        bool changed;
    } settings[] = {{u"Ch", u"2", false}, {u"Ch", u"1", true}, {u"Bit", u"65560", true}, {u"Freq", u"8000", true},
                    {u"Format", u"PCM", false}, {u"Format", u"pcm", false}, {u"Type", u"Wave", false}};
    for (const auto& s : settings)
        EXPECT_EQ(chunk.SetAttribute(WideString(s.name), WideString(s.value)), s.changed) << WideToUtf8(s.name);
    EXPECT_EQ(chunk.GetFormat().bitsPerSample, 24);
    EXPECT_EQ(chunk.GetFormat().blockAlign, 3);
    EXPECT_EQ(chunk.GetFormat().avgBytesPerSec, 24000u);
    EXPECT_FALSE(root->SetAttribute(WideString(u"Type"), WideString(u"Wave")));
    EXPECT_FALSE(root->SetAttribute(WideString(u"Type"), WideString(u"AVI ")));

    WaveDocument notRiff;
    FormatChunk outside(notRiff);
    EXPECT_FALSE(outside.SetAttribute(WideString(u"Ch"), WideString(u"2")));
    EXPECT_TRUE(outside.SetAttribute(WideString(u"Format"), WideString(u"PCM")));
    EXPECT_FALSE(outside.Write(target));

    const char16_t* names[] = {u"RF64", u"Riff", u"Data", u"Format", u"riff", u"fmt "};
    const std::uint32_t ids[] = {kIdRf64, kIdRiff, kIdData, kIdFormat, 0, 0};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(ChunkIdFromName(WideString(names[i])), ids[i]);
}
