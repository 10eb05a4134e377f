#include "base/Utf8.h"
#include "layouttext/LayoutDocument.h"

#include "platform/TextCodec.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::string Shown(const WideString& text)
{
    std::string shown;
    for (char c : WideToUtf8(text.View()))
        shown += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
    return shown;
}

// Sections in order as "[name] key=value key=value", keys sorted, since a
// map's walk order is no part of its behaviour.
std::string Describe(const LayoutDocument& document)
{
    std::string text;
    for (std::int32_t i = 0; i < document.GetSectionCount(); ++i) {
        text += (i ? " [" : "[") + Shown(document.GetSectionName(i)) + "]";
        const AttributeMap& map = document.GetSectionMap(i);
        std::vector<std::string> entries;
        WideString key;
        WideString value;
        for (std::int32_t index = 0; map.GetEntry(index, key, value); ++index)
            entries.push_back(Shown(key) + "=" + Shown(value));
        std::sort(entries.begin(), entries.end());
        for (const std::string& entry : entries)
            text += " " + entry;
    }
    return text;
}

// Bytes as the thread's character set reads them. The native tests run with
// UTF-8, where the Japanese of these tests reads as itself; under another code page
// the same bytes give other characters, and the document must hold those.
WideString ThreadText(std::string_view bytes)
{
    return WideString(platform::ThreadBytesToWide(bytes.data(), bytes.size()));
}

} // namespace

TEST(LayoutDocumentParse, SectionGrammar)
{
    const std::pair<std::u16string_view, const char*> cases[] = {
        {u"; the path\r\n[EditableText]\r\nName=WaveFilePath\r\nOption=SingleLine,TabStop",
         "[EditableText] Name=WaveFilePath Option=SingleLine,TabStop"},
        {u"[]\r\nk=v", ""}, {u"[A]\r\n[x\r\nk=v", "[A] k=v"}, {u"[A]\r\na=b=c", "[A] a=b=c"}, {u"[A]\r\n=x", "[A] ="},
        {u"[A]\r\nx=", "[A] x="}, {u"[a=b]\r\nk=v", "[a=b] k=v"}, {u"[[x]]", "[[x]]"},
        {u"k=v\r\n[A]\r\nplain words", "[A]"}, {u"[A]\r\nk=1\r\nK=1\r\nk=2\r\n[A]\r\nk=3", "[A] K=1 k=2 [A] k=3"},
        // Nothing is trimmed, and markers count only as the very first character.
        {u" [A]\r\nk=v", ""},
        {u"[A]\r\n a = b \r\n\tk\t=\tv", "[A] \tk\t=\tv  a = b "},
        {u"[A]\r\n//[x]\r\n //[x]\r\n;k=v\r\n ;k=v\r\n//k=v", "[A]  ;k=v"},
        {u"[A]\r\nText=\"q\\n\" /* http://host/a;b */", "[A] Text=\"q\\n\" /* http://host/a;b */"},
        // Lines end only at CR LF; empty lines vanish, a last line needs no end.
        {u"[A]\nk=v\n[B]", "[A]\\nk=v\\n[B]"}, {u"[A]\r\nk=v\nx=y\r\nz=1\r", "[A] k=v\\nx=y z=1\\r"},
        {u"\r\n\r\n[A]\r\n\r\nk=v\r\n\r\n", "[A] k=v"}, {u"\uFEFF[A]\r\nk=v", ""},
    };
    for (const auto& [text, sections] : cases) {
        SCOPED_TRACE(Shown(WideString(text)));
        LayoutDocument document;
        EXPECT_TRUE(document.Parse(WideString(text)));
        EXPECT_EQ(Describe(document), sections);
    }
}

TEST(LayoutDocumentParse, ClearsFirstAndGivesEmptySectionsOutOfRange)
{
    LayoutDocument document;
    ASSERT_TRUE(document.Parse(u"[A]\r\nk=v\r\n[B]"));
    for (std::int32_t index : {-1, 2}) {
        EXPECT_TRUE(document.GetSectionName(index).IsEmpty()) << index;
        EXPECT_EQ(document.GetSectionMap(index).Count(), 0) << index;
    }
    EXPECT_TRUE(document.Parse(u"; nothing usable"));
    EXPECT_EQ(document.GetSectionCount(), 0);
    ASSERT_TRUE(document.Parse(u"[Riff]\r\nType=Wave\r\n[Format]\r\n[Data]"));
    ASSERT_TRUE(document.RemoveFirstSection());
    EXPECT_EQ(Describe(document), "[Format] [Data]");
    EXPECT_FALSE(document.Parse(u""));
    EXPECT_EQ(document.GetSectionCount(), 0);
    EXPECT_FALSE(document.RemoveFirstSection());
}

class LayoutDocumentLoad : public ::testing::Test {
protected:
    TempDir dir;
    LayoutDocument document;
};

// The file is read in pieces but converted as a whole, so a character whose
// bytes straddle a piece boundary survives, and the bytes of a byte order
// mark stand in front of the first line, which is then no header.
TEST_F(LayoutDocumentLoad, BytesAreConvertedAsOneTextAndFailuresKeepOrClearTheDocument)
{
    std::string pad = std::string(2047 - 9, 'x') + "\xE6\x97\xA5"; // ends in 日
    std::string bytes = "[A]\r\nPad=" + pad + "\r\n";
    for (int i = 0; i < 500; ++i)
        bytes += "K" + std::to_string(i) + "=" + std::to_string(i) + "\r\n";
    ASSERT_TRUE(document.Load(dir.Write("big.jpn", bytes)));
    const AttributeMap& map = document.GetSectionMap(0);
    EXPECT_EQ(map.GetRaw(u"Pad"), ThreadText(pad));
    EXPECT_EQ(map.Count(), 501);
    EXPECT_EQ(map.GetFirstInt(u"K499", -1), 499);
    ASSERT_TRUE(document.Load(dir.Write("bom.jpn", "\xEF\xBB\xBF[A]\r\nk=v\r\n[B]\r\nk=w")));
    EXPECT_EQ(Describe(document), "[B] k=w");

    ASSERT_TRUE(document.Load(dir.Write("a.jpn", "[A]")));
    // An empty path or a file that can't be opened leaves the document as it was.
    EXPECT_FALSE(document.Load(WideString()));
    EXPECT_FALSE(document.Load(dir.PathOf("missing.jpn")));
    EXPECT_EQ(Describe(document), "[A]");
    EXPECT_EQ(document.GetPath(), dir.PathOf("a.jpn"));
    // An empty file clears it; a file without a usable line loads as empty.
    EXPECT_FALSE(document.Load(dir.Write("empty.jpn", "")));
    EXPECT_EQ(document.GetSectionCount(), 0);
    EXPECT_TRUE(document.GetPath().IsEmpty());
    ASSERT_TRUE(document.Load(dir.Write("comments.jpn", "; a\r\n// b\r\nk=v\r\n")));
    EXPECT_EQ(document.GetSectionCount(), 0);
    EXPECT_EQ(document.GetPath(), dir.PathOf("comments.jpn"));
}

// Japanese written in the thread's own code page, as an installation's
// layout file is: the texts come back as they were written. A thread whose
// code page holds no Japanese skips this, unless the run demands one.
TEST_F(LayoutDocumentLoad, JapaneseInTheThreadCodePage)
{
    const std::u16string text = u"; 日本語のレイアウト\r\n"
                                u"[EditableText]\r\n"
                                u"Name=Message\r\n"
                                u"Text=\"処理中...\"\r\n"
                                u"[ボタン]\r\n"
                                u"表示=開始\r\n"
                                u"[ボタン]\r\n"
                                u"表示=終了";
    bool lossy = false;
    const std::string bytes = platform::WideToThreadBytes(text, lossy);
    if (lossy) {
        if (std::getenv("SONDARA_REQUIRE_JAPANESE_CODE_PAGE"))
            FAIL() << "the thread's code page holds no Japanese";
        GTEST_SKIP() << "the thread's code page holds no Japanese";
    }
    ASSERT_TRUE(document.Load(dir.Write("Main.jpn", bytes)));
    ASSERT_EQ(document.GetSectionCount(), 3);
    EXPECT_EQ(document.GetSectionMap(0).GetValue(u"Text", u"", true), u"処理中...");
    EXPECT_EQ(document.GetSectionName(1), u"ボタン");
    EXPECT_EQ(document.GetSectionName(2), u"ボタン");
    EXPECT_EQ(document.GetSectionMap(1).GetRaw(u"表示"), u"開始");
    EXPECT_EQ(document.GetSectionMap(2).GetRaw(u"表示"), u"終了");
}
