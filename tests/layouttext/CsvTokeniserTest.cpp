#include "base/Utf8.h"
#include "layouttext/CsvTokeniser.h"


#include <gtest/gtest.h>

#include <string>

namespace {

enum class Settings { Default, DropEmpty, Own };

// Rows as "{<a><b>}{<c>}", with CR, LF and TAB spelled out.
std::string Describe(const CsvTokeniser& tokeniser)
{
    std::string text;
    for (const CsvRow& row : tokeniser.rows) {
        text += "{";
        for (const WideString& item : row) {
            text += "<";
            for (char c : WideToUtf8(item.View()))
                text += c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\t' ? "\\t" : std::string(1, c);
            text += ">";
        }
        text += "}";
    }
    return text;
}

} // namespace

TEST(CsvTokeniser, RowsItemsAndComments)
{
    struct Case {
        Settings settings;
        std::u16string_view text;
        const char* rows;
    };
    const Case cases[] = {
        // Rows end at LF; a CR or LF ends a row keeping an empty item, the
        // end of the text keeps only a non-empty one.
        {Settings::Default, u"a,b\nc", "{<a><b>}{<c>}"},
        {Settings::Default, u"a\n\nb\n", "{<a>}{}{<b>}"},
        {Settings::Default, u"a,b\r\nc\r\n", "{<a><b>}{<c>}"},
        {Settings::Default, u"a,", "{<a>}"},
        {Settings::Default, u"a,\r", "{<a><>}"},
        {Settings::Default, u"\"a\rb\",c", "{<a>}"},
        {Settings::Default, u"\"\",\"\"", "{<>}"},
        // Escapes work inside quotes only; an escaped CR is dropped.
        {Settings::Default, u"a\\qb,\"x\\ty\\q\"", "{<a\\qb><x\\ty>}"},
        {Settings::Default, u"\"\\\r\"", "{}"},
        // Comments go first, pair by pair in list order; the LF belongs to a
        // "//" comment, and an open string without a close stays.
        {Settings::Default, u"a,b// note\nc", "{<a><bc>}"},
        {Settings::Default, u"a/* x */b\n/* y\n */c", "{<ab>}{<c>}"},
        {Settings::Default, u"/* // */x\ny", "{</* y>}"},
        {Settings::Default, u"x/* y */z/* w", "{<xz/* w>}"},
        {Settings::Default, u"/*/a", "{<a>}"},
        {Settings::Default, u"\"a//b\"\nc", "{<ac>}"},
        {Settings::DropEmpty, u",a,,b,", "{<a><b>}"},
        {Settings::DropEmpty, u"a\n,,\n\nb", "{<a>}{<b>}"},
        {Settings::DropEmpty, u"a,\rb\rc", "{<a><b>}"},
        {Settings::Own, u"a;b\tc,d", "{<a><b><c,d>}"},
        {Settings::Own, u"'a;b'^;'it^'s'", "{<a;b^><it's>}"},
        {Settings::Own, u"a # note\nb;/* c */", "{<a b></* c */>}"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(WideToUtf8(c.text));
        CsvTokeniser tokeniser;
        tokeniser.dropEmpty = c.settings == Settings::DropEmpty;
        if (c.settings == Settings::Own) {
            tokeniser.separators = u";\t";
            tokeniser.quotes = u"'";
            tokeniser.escapes = u"^";
            tokeniser.comments.Clear();
            tokeniser.comments.Add({WideString(u"#"), WideString(u"\n")});
            tokeniser.comments.Add({WideString(u""), WideString(u"x")});
        }
        EXPECT_TRUE(tokeniser.Parse(WideString(c.text)));
        EXPECT_EQ(Describe(tokeniser), c.rows);
    }
}

TEST(CsvTokeniser, EmptyTextAndCommentOnlyTextHaveNoRows)
{
    CsvTokeniser tokeniser;
    ASSERT_TRUE(tokeniser.Parse(u"a"));
    EXPECT_FALSE(tokeniser.Parse(u""));
    EXPECT_TRUE(tokeniser.rows.IsEmpty());
    EXPECT_TRUE(tokeniser.Parse(u"// x\n/* y */"));
    EXPECT_TRUE(tokeniser.rows.IsEmpty());
    EXPECT_TRUE(tokeniser.GetFirstRow().IsEmpty());
    ASSERT_TRUE(tokeniser.Parse(u"p,q\nr"));
    EXPECT_EQ(tokeniser.GetFirstRow().At(1), u"q");
}
