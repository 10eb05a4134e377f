#include "base/Utf8.h"
#include "layouttext/AttributeMap.h"
#include "support/MapOf.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

TEST(AttributeMap, DefaultsApplyOnlyToAbsentKeysOrItems)
{
    AttributeMap map = MapOf({{u"Text", u"\"a\\tb\""}, {u"Empty", u""}, {u"Bad", u"zz"},
                              {u"Pair", u"-5px, 1a"}, {u"Lead", u",7"}, {u"Trail", u"1,"}});
    EXPECT_EQ(map.GetValue(u"Text", u"d", false), u"\"a\\tb\"");
    EXPECT_EQ(map.GetValue(u"Text", u"d", true), u"a\tb");
    EXPECT_EQ(map.GetValue(u"Empty", u"d", true), u"");
    EXPECT_EQ(map.GetValue(u"Missing", u"\"d\\n\"", true), u"\"d\\n\"");
    EXPECT_EQ(map.GetValue(u"text", u"d", false), u"d");
    EXPECT_EQ(map.GetRaw(u"Missing"), u"");

    EXPECT_EQ(map.GetHex(u"Bad", 1), 0u);
    EXPECT_EQ(map.GetHex(u"Empty", 1), 0u);
    EXPECT_EQ(map.GetHex(u"Missing", 1), 1u);
    EXPECT_EQ(map.GetFirstInt(u"Pair", 99), -5);
    EXPECT_EQ(map.GetFirstInt(u"Lead", 99), 0);
    EXPECT_EQ(map.GetFirstInt(u"Empty", 99), 99);
    EXPECT_EQ(map.GetSecondHex(u"Pair"), 0x1Au);
    EXPECT_EQ(map.GetSecondHex(u"Trail"), 0u);
    EXPECT_EQ(map.GetSecondHex(u"Bad"), 0xFFFFFFFFu);
    EXPECT_EQ(map.GetFloatItem(u"Pair", 1, -1.0f), 1.0f);
    EXPECT_EQ(map.GetFloatItem(u"Pair", 2, -1.0f), -1.0f);
    EXPECT_EQ(map.GetFloatItem(u"Missing", 0, -1.0f), -1.0f);
}

// The plain comma split: nothing trimmed, and quotes are characters like any
// other, unlike in GetCsvItem.
TEST(AttributeMap, ItemsAreCutAtEveryComma)
{
    const std::pair<const char16_t*, std::vector<std::u16string_view>> cases[] = {
        {u"a", {u"a"}}, {u"", {}}, {u"a,,b", {u"a", u"", u"b"}}, {u"a,", {u"a", u""}},
        {u"10, 20", {u"10", u" 20"}}, {u"\"a,b\",c", {u"\"a", u"b\"", u"c"}}};
    for (const auto& [value, items] : cases) {
        SCOPED_TRACE(WideToUtf8(std::u16string_view(value)));
        AttributeMap map = MapOf({{u"List", value}});
        auto count = static_cast<std::int32_t>(items.size());
        ASSERT_EQ(map.GetItemCount(u"List"), count);
        WideString item(u"untouched");
        for (std::int32_t i = 0; i < count; ++i) {
            ASSERT_TRUE(map.GetItem(u"List", i, item));
            EXPECT_EQ(item.View(), items[static_cast<std::size_t>(i)]);
            EXPECT_EQ(map.GetItemOr(u"List", i, u"default"), item);
        }
        item = u"untouched";
        EXPECT_FALSE(map.GetItem(u"List", count, item));
        EXPECT_FALSE(map.GetItem(u"List", -1, item));
        EXPECT_EQ(item, u"untouched");
        EXPECT_EQ(map.GetItemOr(u"List", count, u"default"), u"default");
    }
    EXPECT_EQ(AttributeMap().GetItemCount(u"List"), 0);

    AttributeMap flags = MapOf({{u"Option", u"Disable,TabStop"}, {u"Spaced", u"Disable, TabStop"},
                                {u"Holes", u"a,,b"}});
    EXPECT_TRUE(flags.HasItem(u"Option", u"TabStop"));
    EXPECT_FALSE(flags.HasItem(u"Option", u"Tab"));
    EXPECT_FALSE(flags.HasItem(u"Option", u"disable"));
    EXPECT_FALSE(flags.HasItem(u"Spaced", u"TabStop"));
    EXPECT_TRUE(flags.HasItem(u"Spaced", u" TabStop"));
    EXPECT_FALSE(flags.HasItem(u"Holes", u""));
    EXPECT_FALSE(flags.HasItem(u"Missing", u"Disable"));
}

// Growth during inserts and the final fit keep every key reachable, and a
// walk visits each entry once. "ab" and "bA" share their hash, and keys
// differ by case.
TEST(AttributeMap, ManyKeysStayReachableThroughGrowthAndRehash)
{
    AttributeMap map;
    for (const char16_t* key : {u"ab", u"bA", u"AB", u"ab"})
        map.Set(key, key);
    map.Set(u"AB", u"AB2");
    constexpr int kKeys = 3000;
    auto keyOf = [](int i) { return WideString::FromAscii("Key" + std::to_string(i)); };
    for (int i = 0; i < kKeys; ++i)
        map.Set(keyOf(i), WideString::FromAscii(std::to_string(i)));
    for (const char* stage : {"grown", "rehashed"}) {
        SCOPED_TRACE(stage);
        for (int i = 0; i < kKeys; ++i)
            ASSERT_EQ(map.GetFirstInt(keyOf(i), -1), i);
        EXPECT_EQ(map.GetRaw(u"ab"), u"ab");
        EXPECT_EQ(map.GetRaw(u"bA"), u"bA");
        EXPECT_EQ(map.GetRaw(u"AB"), u"AB2");
        std::set<std::u16string> seen;
        WideString key, value;
        for (int index = 0; map.GetEntry(index, key, value); ++index) {
            EXPECT_EQ(map.GetRaw(key), value);
            seen.insert(key.ToU16String());
        }
        EXPECT_EQ(seen.size(), static_cast<std::size_t>(kKeys + 3));
        EXPECT_EQ(map.Count(), kKeys + 3);
        EXPECT_FALSE(map.GetEntry(-1, key, value));
        map.Rehash();
    }
}
