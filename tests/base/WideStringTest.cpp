#include "base/Array.h"
#include "base/WideString.h"

#include <gtest/gtest.h>

TEST(WideString, CopiesShareUntilChanged)
{
    WideString a(u"abc");
    WideString b = a;
    EXPECT_EQ(a.Data(), b.Data());
    b += u"d";
    EXPECT_EQ(a, u"abc");
    EXPECT_EQ(b, u"abcd");
    EXPECT_NE(a.Data(), b.Data());
}

TEST(WideString, BadIndexThrowsInvalidArgument)
{
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
}

TEST(WideString, EmbeddedZeroAndEmpty)
{
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
