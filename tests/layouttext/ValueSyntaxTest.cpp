#include "base/Utf8.h"
#include "layouttext/ValueSyntax.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

TEST(ValueSyntax, UnescapeAndAlign)
{
    const std::pair<std::u16string_view, std::u16string_view> escapes[] = {
        {u"\"Hello\"", u"Hello"}, {u"a\\nb", u"a\nb"}, {u"\\r\\t", u"\r\t"}, {u"\\q", u"\\q"},
        {u"abc\\", u"abc"}, {u"say \\\"hi\\\"", u"say \"hi\""}, {u"a\\\\n", u"a\\n"}, {u"a\"b\"c", u"abc"}};
    for (const auto& [text, expected] : escapes) {
        SCOPED_TRACE(WideToUtf8(text));
        EXPECT_EQ(Unescape(WideString(text)).View(), expected);
    }
    const std::pair<const char16_t*, std::int32_t> aligns[] = {
        {u"R", 2}, {u"B", 2}, {u"C", 1}, {u"L", 0}, {u"", 0}, {u"r", 0}, {u" R", 0}, {u"RB", 0}};
    for (const auto& [text, expected] : aligns)
        EXPECT_EQ(ParseAlign(text), expected) << WideToUtf8(text);
}

// GetCsvItem reads the first row as the tokeniser does; CountCsvItems only
// counts commas.
TEST(ValueSyntax, CsvItemsOfTheFirstRow)
{
    struct Case {
        std::u16string_view text;
        std::int32_t commaCount;
        std::vector<std::u16string_view> items;
    };
    const Case cases[] = {
        {u"", 0, {}}, {u"a\\nb", 1, {u"a\\nb"}}, {u"\"a,b\",c", 3, {u"a,b", u"c"}}, {u"a,b\nc,d,e", 4, {u"a", u"b"}},
        {u"a,", 2, {u"a"}}, {u"http://host/x,1", 2, {u"http://host/x", u"1"}}, {u"/* only */", 1, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(WideToUtf8(c.text));
        WideString text(c.text);
        EXPECT_EQ(CountCsvItems(text), c.commaCount);
        WideString item(u"untouched");
        for (std::size_t i = 0; i < c.items.size(); ++i) {
            ASSERT_TRUE(GetCsvItem(text, static_cast<std::int32_t>(i), item)) << i;
            EXPECT_EQ(item.View(), c.items[i]);
        }
        item = u"untouched";
        EXPECT_FALSE(GetCsvItem(text, static_cast<std::int32_t>(c.items.size()), item));
        EXPECT_FALSE(GetCsvItem(text, -1, item));
        EXPECT_EQ(item, u"untouched");
    }
    EXPECT_EQ(GetCsvFloat(u" 12.25pt,2", -1.0f), 12.25f);
    EXPECT_EQ(GetCsvFloat(u",2", -1.0f), 0.0f);
    EXPECT_EQ(GetCsvFloat(u"/* none */", -1.0f), -1.0f);
}

// Scans never overflow, whatever the length of the digits: integers wrap
// modulo 2^32, floats saturate to infinity or 0. The decimal point is always
// '.', and only ASCII blanks are skipped.
TEST(ValueSyntax, NumberScans)
{
    const std::pair<std::u16string_view, std::uint32_t> hexes[] = {
        {u"FF000000", 0xFF000000}, {u"0xff", 0xFF}, {u" \t\r\n1a", 0x1A}, {u"12zz", 0x12}, {u"zz", 0},
        {u"0x", 0}, {u"-1", 0xFFFFFFFF}, {u"1FFFFFFFF", 0xFFFFFFFF}, {u"\u3000A", 0},
        {u"123456789ABCDEF0123456789ABCDEF0123456789", 0x23456789}};
    for (const auto& [text, expected] : hexes)
        EXPECT_EQ(ScanHex(text), expected) << WideToUtf8(text);

    const std::pair<std::u16string_view, std::int32_t> integers[] = {
        {u"42", 42}, {u"-7", -7}, {u"+3", 3}, {u" 12px", 12}, {u"x1", 0}, {u"-", 0},
        {u"2147483648", std::numeric_limits<std::int32_t>::min()}, {u"4294967297", 1},
        {u"99999999999999999999999", -159383553}};
    for (const auto& [text, expected] : integers)
        EXPECT_EQ(ScanDecimalInt(text), expected) << WideToUtf8(text);

    const std::u16string zeros(400, u'0');
    const float inf = std::numeric_limits<float>::infinity();
    const std::pair<std::u16string, float> floats[] = {
        {u"-2.25", -2.25f}, {u" .5", 0.5f}, {u"5.", 5.0f}, {u"+1e3", 1000.0f}, {u"2.5E-1", 0.25f},
        {u"1e+", 1.0f}, {u"1,5", 1.0f}, {u".", 0.0f}, {u"inf", 0.0f}, {u"0x10", 0.0f}, {u"1e39", inf},
        {u"-1e400", -inf}, {u"1e-400", 0.0f}, {u"1e99999999999999999999", inf},
        {u"0e99999999999999999999", 0.0f},
        {u"0." + zeros + u"1e401", 1.0f}, {u"1" + zeros + u"e-400", 1.0f}};
    for (const auto& [text, expected] : floats)
        EXPECT_EQ(ScanFloat(text), expected) << WideToUtf8(text);
    EXPECT_TRUE(std::signbit(ScanFloat(u"-0")));
}
