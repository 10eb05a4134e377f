#include "platform/ControlFont.h"

#include "platform/standin/StandIn.h"

#include <algorithm>

// The stand-in's screen has one logical unit to the pixel, so a font's
// height is the size in pixels of its resolution, rounded as the system's
// MulDiv rounds.
namespace platform {

namespace {

constexpr std::size_t kFaceNameLimit = 31;

} // namespace

ControlFontHandle CreateControlFont(std::int32_t tenths, std::u16string_view faceName)
{
    const std::int64_t size = tenths < 0 ? -std::int64_t{tenths} : tenths;
    auto* font = new ControlFontObject;
    font->height = -static_cast<std::int32_t>((standin::kScreenDpi * size + 360) / 720);
    font->face = faceName.substr(0, std::min(faceName.size(), kFaceNameLimit));
    return font;
}

void DeleteControlFont(ControlFontHandle font)
{
    delete font;
}

} // namespace platform
