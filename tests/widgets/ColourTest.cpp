#include "widgets/Colour.h"
#include "widgets/IconFont.h"

#include "platform/standin/TestHooks.h"
#include "platform/SystemSettings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

std::vector<std::uint8_t> IconFontRecord(const std::u16string& face, std::size_t size = 92)
{
    std::vector<std::uint8_t> record(size, 0x41);
    for (std::size_t i = 0; i < 32 && 28 + 2 * i + 1 < size; ++i) {
        const char16_t unit = i < face.size() ? face[i] : u'\0';
        record[28 + 2 * i] = static_cast<std::uint8_t>(unit & 0xFF);
        record[28 + 2 * i + 1] = static_cast<std::uint8_t>(unit >> 8);
    }
    return record;
}

// System colours become opaque ARGB; the icon font's face comes only of a
// binary record of the right size.
TEST(SystemLook, OpaqueColoursAndTheIconFontOfARecordOfTheRightSize)
{
    const char16_t* key = u"Control Panel\\Desktop\\WindowMetrics";
    platform::testing::ResetStandIn();
    EXPECT_EQ(ArgbFromColorRef(0x00332211), 0xFF112233u);
    EXPECT_EQ(ArgbFromColorRef(0xAB332211), 0xFF112233u);

    platform::testing::SetSystemColour(15, 0x010203);
    EXPECT_EQ(ButtonFaceColour(), 0xFF030201u);

    EXPECT_EQ(GetIconFontName(), u"");

    platform::testing::SetUserRegistryValue(key, u"IconFont", platform::kRegistryBinary,
                                            IconFontRecord(u"Meiryo UI"));
    EXPECT_EQ(GetIconFontName(), u"Meiryo UI");

    // A face that fills all 32 units has no zero behind it and ends with the record.
    const std::u16string full(32, u'\u30E1');
    platform::testing::SetUserRegistryValue(key, u"IconFont", platform::kRegistryBinary, IconFontRecord(full));
    EXPECT_EQ(GetIconFontName().ToU16String(), full);

    platform::testing::SetUserRegistryValue(key, u"IconFont", 1, IconFontRecord(u"Meiryo UI"));
    EXPECT_EQ(GetIconFontName(), u"");
    for (std::size_t size : {0, 60, 91, 93, 420}) {
        platform::testing::SetUserRegistryValue(key, u"IconFont", platform::kRegistryBinary,
                                                IconFontRecord(u"Meiryo UI", size));
        EXPECT_EQ(GetIconFontName(), u"") << size;
    }
    platform::testing::ResetStandIn();
}

} // namespace
