#include "base/Utf8.h"
#include "layouttext/CsvTokeniser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

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

// With its default settings, the only ones the program uses. A text that
// is empty has no rows and is refused; one of comments alone has none.
TEST(CsvTokeniser, RowsItemsAndComments)
{
    const std::pair<std::u16string_view, const char*> cases[] = {
        // Rows end at LF; a CR or LF ends a row keeping an empty item, the
        // end of the text keeps only a non-empty one.
        {u"a,b\nc", "{<a><b>}{<c>}"}, {u"a\n\nb\n", "{<a>}{}{<b>}"}, {u"a,b\r\nc\r\n", "{<a><b>}{<c>}"},
        {u"a,", "{<a>}"}, {u"a,\r", "{<a><>}"}, {u"\"a\rb\",c", "{<a>}"}, {u"\"\",\"\"", "{<>}"},
        // Escapes work inside quotes only; an escaped CR is dropped.
        {u"a\\qb,\"x\\ty\\q\"", "{<a\\qb><x\\ty>}"}, {u"\"\\\r\"", "{}"},
        // Comments go first, pair by pair in list order; the LF belongs to a
        // "//" comment, and an open string without a close stays.
        {u"a,b// note\nc", "{<a><bc>}"}, {u"a/* x */b\n/* y\n */c", "{<ab>}{<c>}"}, {u"/* // */x\ny", "{</* y>}"},
        {u"x/* y */z/* w", "{<xz/* w>}"}, {u"/*/a", "{<a>}"}, {u"\"a//b\"\nc", "{<ac>}"},
        {u"", ""}, {u"// x\n/* y */", ""},
    };
    // One tokeniser for all, so that each text is seen to clear what was before.
    CsvTokeniser tokeniser;
    for (const auto& [text, rows] : cases) {
        SCOPED_TRACE(WideToUtf8(text));
        EXPECT_EQ(tokeniser.Parse(WideString(text)), !text.empty());
        EXPECT_EQ(Describe(tokeniser), rows);
    }
    EXPECT_TRUE(tokeniser.GetFirstRow().IsEmpty());
    ASSERT_TRUE(tokeniser.Parse(u"p,q\nr"));
    EXPECT_EQ(tokeniser.GetFirstRow().At(1), u"q");
}
