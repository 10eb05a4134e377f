#include "widgets/IconFont.h"

#include "platform/SystemSettings.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr char16_t kMetricsKey[] = u"Control Panel\\Desktop\\WindowMetrics";
constexpr char16_t kIconFontValue[] = u"IconFont";
// The value is a font description record of the wide-text kind: 92 bytes,
// whose last 64 are the face name, 32 units ending in a zero unit.
constexpr std::size_t kRecordSize = 92;
constexpr std::size_t kFaceNameOffset = 28;

} // namespace

// Anything but a binary value of exactly one record gives an empty name.
WideString GetIconFontName()
{
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    if (!platform::ReadUserRegistryValue(kMetricsKey, kIconFontValue, type, data))
        return {};
    if (type != platform::kRegistryBinary || data.size() != kRecordSize)
        return {};
    WideString face;
    for (std::size_t at = kFaceNameOffset; at + 1 < kRecordSize; at += 2) {
        const auto unit = static_cast<char16_t>(data[at] | data[at + 1] << 8);
        if (unit == u'\0')
            break;
        face += unit;
    }
    return face;
}
