#include "base/Utf8.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

std::string Hex(std::string_view bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned char byte : bytes)
        text += std::string{' ', digits[byte >> 4], digits[byte & 15]};
    return text;
}

std::u16string Units(std::initializer_list<char16_t> units)
{
    return std::u16string(units);
}

} // namespace

// A path's bytes as UTF-16 and back: valid UTF-8 decodes as text, and every
// byte that starts no valid sequence travels as U+DC80..U+DCFF, so that the
// bytes come back exactly.
TEST(PathUtf8, KeepsEveryByte)
{
    const struct {
        std::string bytes;
        std::u16string wide;
    } cases[] = {
        {"", u""},
        {"/tmp/take 1.wav", u"/tmp/take 1.wav"},
        {"caf\xC3\xA9.wav", u"café.wav"},
        {"\xE7\xB4\x8D\xE5\x93\x81", u"納品"},
        {"a\xF0\x9F\x98\x80" "b", u"a\U0001F600b"},
        // A pair whose second half lies among the escapes is still one character.
        {"\xF0\x9F\x92\xA9", u"\U0001F4A9"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        // Latin-1 and CP932 names, as old archives hold them.
        {"caf\xE9.wav", u"caf" + Units({0xDCE9}) + u".wav"},
        {"\x83\x65\x83\x58\x83\x67", Units({0xDC83, 0x65, 0xDC83, 0x58, 0xDC83, 0x67})},
        // Cut sequences: at the end, and before ASCII or another lead byte.
        {"\xE3\x81", Units({0xDCE3, 0xDC81})},
        {"\xF0\x9F\x98x", Units({0xDCF0, 0xDC9F, 0xDC98, u'x'})},
        {"\xC3\xE3\x81\x82", Units({0xDCC3, 0x3042})},
        {"\xA9\xC3\xA9", Units({0xDCA9, 0xE9})},
        // Overlong forms, encoded surrogates and code points past U+10FFFF.
        {"\xC0\xAF", Units({0xDCC0, 0xDCAF})},
        {"\xE0\x80\xAF", Units({0xDCE0, 0xDC80, 0xDCAF})},
        {"\xF0\x80\x80\xAF", Units({0xDCF0, 0xDC80, 0xDC80, 0xDCAF})},
        {"\xED\xA0\x80", Units({0xDCED, 0xDCA0, 0xDC80})},
        {"\xED\xB2\xA9", Units({0xDCED, 0xDCB2, 0xDCA9})},
        {"\xF4\x90\x80\x80", Units({0xDCF4, 0xDC90, 0xDC80, 0xDC80})},
        {"\xFE\xFF", Units({0xDCFE, 0xDCFF})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Hex(c.bytes));
        EXPECT_EQ(PathUtf8ToWide(c.bytes), c.wide);
        EXPECT_EQ(WideToPathUtf8(c.wide), c.bytes);
    }
    for (int byte = 0x80; byte <= 0xFF; ++byte) {
        const std::string bytes = std::string("a") + static_cast<char>(byte) + "b";
        SCOPED_TRACE(Hex(bytes));
        const std::u16string wide = PathUtf8ToWide(bytes);
        EXPECT_EQ(wide, u"a" + Units({static_cast<char16_t>(0xDC00 + byte)}) + u"b");
        EXPECT_EQ(WideToPathUtf8(wide), bytes);
        // Text other than paths keeps its replacement character.
        EXPECT_EQ(Utf8ToWide(bytes), u"a\uFFFDb");
    }
}

// Any bytes at all come back as they went, whatever mix of valid and broken
// sequences they hold.
TEST(PathUtf8, RoundTripsArbitraryBytes)
{
    std::uint32_t state = 2463534242u;
    auto next = [&] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    // Bytes drawn mostly from lead and continuation bytes, so that valid,
    // cut and overlong sequences all turn up.
    const unsigned char pool[] = {'a', '/', 0x7F, 0x80, 0x81, 0x9F, 0xA0, 0xBF, 0xC0, 0xC2, 0xC3, 0xDF, 0xE0, 0xE3,
                                  0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xFF};
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(next() % 9, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(pool[next() % sizeof pool]);
        const std::u16string wide = PathUtf8ToWide(bytes);
        ASSERT_EQ(WideToPathUtf8(wide), bytes) << Hex(bytes);
        // Where the bytes are valid UTF-8, the path is the text they spell.
        if (Utf8ToWide(bytes).find(u'\uFFFD') == std::u16string::npos) {
            ASSERT_EQ(wide, Utf8ToWide(bytes)) << Hex(bytes);
        }
    }
}

// UTF-16 that no path of bytes gives: a lone high surrogate and a low one
// below the escapes have no byte, and become U+FFFD as in other text.
TEST(PathUtf8, LoneSurrogatesOutsideTheEscapes)
{
    const struct {
        std::u16string wide;
        std::string bytes;
    } cases[] = {
        {Units({u'a', 0xD800}), "a\xEF\xBF\xBD"},
        {Units({0xD83D, u'x'}), "\xEF\xBF\xBDx"},
        {Units({0xDC00, 0xDC7F, 0xDC80}), "\xEF\xBF\xBD\xEF\xBF\xBD\x80"},
        {Units({0xD83D, 0xDE00, 0xDCFF}), "\xF0\x9F\x98\x80\xFF"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Hex(c.bytes));
        EXPECT_EQ(WideToPathUtf8(c.wide), c.bytes);
    }
}
