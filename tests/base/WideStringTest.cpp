#include "base/Array.h"
#include "base/Utf8.h"
#include "base/WideString.h"

#include <gtest/gtest.h>

// Copies share their text until one changes; a bad index throws the
// invalid argument code; zeros are characters like any other; every match
// is replaced, and letters are lowered.
TEST(WideString, CopiesShareIndexesAreCheckedAndZerosCount)
{
    WideString a(u"abc");
    WideString b = a;
    EXPECT_EQ(a.Data(), b.Data());
    b += u"d";
    EXPECT_EQ(a, u"abc");
    EXPECT_EQ(b, u"abcd");
    EXPECT_NE(a.Data(), b.Data());

    WideString text(u"ab");
    EXPECT_EQ(text.At(1), u'b');
    try {
        text.At(2);
        FAIL() << "no exception";
    } catch (ContainerError error) {
        EXPECT_EQ(error.resultCode, 0x80070057u);
    }
    EXPECT_THROW(text.Substring(3), ContainerError);
    EXPECT_EQ(text.Substring(2), u"");

    WideString zero(u"a\0b", 3);
    EXPECT_EQ(zero.Length(), 3u);
    WideString empty;
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.Data()[0], u'\0');
    EXPECT_EQ(WideString(u"a&b&").Replaced(u"&", u"%26"), u"a%26b%26");
    EXPECT_EQ(WideString(u"A.WaV").ToLowerAscii(), u"a.wav");
}

TEST(Array, GrowsLikeByteBlockAndChecksIndexes)
{
    Array<int> items;
    EXPECT_THROW(items.At(0), ContainerError);
    for (int i = 0; i < 10; ++i)
        items.Add(i);
    EXPECT_EQ(items.Count(), 10u);
    EXPECT_EQ(items.RemoveAt(3), 3);
    EXPECT_EQ(items.At(3), 4) << "the order of the others stays";
    EXPECT_THROW(items.RemoveAt(9), ContainerError);
}

// Paths and console text cross between UTF-16 and UTF-8 here: an ASCII run
// before, between and after other characters, pairs of surrogates, and a
// lone surrogate, which has no UTF-8 and becomes U+FFFD.
TEST(Utf8, ConvertsBothWays)
{
    const struct {
        std::u16string wide;
        std::string bytes;
    } cases[] = {
        {u"", ""},
        {u"/tmp/take 1.wav", "/tmp/take 1.wav"},
        {u"/納品/é.wav", "/\xE7\xB4\x8D\xE5\x93\x81/\xC3\xA9.wav"},
        {u"a\U0001F600b", "a\xF0\x9F\x98\x80" "b"},
        {u"\u007F\u0080\u07FF\u0800\uFFFF", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        EXPECT_EQ(WideToUtf8(c.wide), c.bytes);
        EXPECT_EQ(Utf8ToWide(c.bytes), c.wide);
    }
    EXPECT_EQ(WideToUtf8(std::u16string(u"ab") + char16_t(0xD800)), "ab\xEF\xBF\xBD");
    EXPECT_EQ(WideToUtf8(std::u16string(1, char16_t(0xDC00)) + u"x"), "\xEF\xBF\xBDx");
}
