#include "wave/MetadataText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

// Every sequence of two bytes, decoded by the checker's code page 932 and by
// python3's cp932 codec (the pairs file the build made with it): the same
// characters, or refused by both. Pairs of two single bytes are in it too,
// so the single bytes are held to the codec as well.
TEST(MetadataText, Cp932AgreesWithPythonOnEveryPair)
{
    std::ifstream pairs(SONDARA_CP932_PAIRS);
    ASSERT_TRUE(pairs.is_open());
    std::string line;
    int compared = 0;
    while (std::getline(pairs, line)) {
        const std::uint8_t bytes[2] = {static_cast<std::uint8_t>(std::stoi(line.substr(0, 2), nullptr, 16)),
                                       static_cast<std::uint8_t>(std::stoi(line.substr(2, 2), nullptr, 16))};
        std::string wanted;
        for (std::size_t at = 5; at < line.size(); at += 5)
            wanted += line[at] == '-' ? std::string("-") : line.substr(at, 4) + " ";
        bool wide = false;
        const std::optional<std::u16string> text = DecodeCp932(BodySpan(bytes, 2), wide);
        std::string got = text ? "" : "-";
        for (char16_t unit : text.value_or(u"")) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "%04X ", static_cast<unsigned>(unit));
            got += hex;
        }
        ASSERT_EQ(got, wanted) << line;
        ++compared;
    }
    EXPECT_EQ(compared, 65536);
}

// The rule's order on the edges: UTF-8 needs a multibyte sequence, CP932 a
// double-byte pair (half-width katakana alone are Latin-1); overlong UTF-8
// or a surrogate falls through; a lone lead byte and C1 controls fit none;
// a CSET's code page is the only one tried.
TEST(MetadataText, RuleTakesTheFirstEncodingThatFits)
{
    struct Case {
        std::string bytes;
        std::optional<std::uint16_t> codePage;
        std::u16string text;
        std::string encoding;
    };
    const Case cases[] = {
        {std::string("Take 1\0\0", 8), std::nullopt, u"Take 1", "ASCII"},
        {"\xE6\x97\xA5", std::nullopt, u"日", "UTF-8"},
        {"\xC0\xAF", std::nullopt, u"\u00C0\u00AF", "Latin-1"},
        {"\xED\xA0\x80", std::nullopt, u"\u605D\u0080", "CP932"},
        {"\x81 ", std::nullopt, u"\\x81 ", "none"},
        {"\x93\xFA", std::nullopt, u"日", "CP932"},
        {"\x93", std::nullopt, u"\\x93", "none"},
        {"\xB1\xB2", std::nullopt, u"±²", "Latin-1"},
        {"\x93\xFA", 932, u"日", "CP932 by CSET 932"},
        {"\x93", 932, u"\\x93", "none by CSET 932"},
        {"\xB1", 1252, u"±", "Latin-1 by CSET 1252"},
        {"\xB1", 0, u"±", "Latin-1"},
        {"\xCF", 1251, u"\\xCF", "code page 1251, not decoded"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.encoding);
        const MetadataText text =
            DecodeMetadataText(BodySpan(reinterpret_cast<const std::uint8_t*>(c.bytes.data()), c.bytes.size()), c.codePage);
        EXPECT_EQ(text.text, c.text);
        EXPECT_EQ(EncodingName(text), c.encoding);
        EXPECT_EQ(IsUndecodable(text), c.encoding.rfind("none", 0) == 0);
    }
}
