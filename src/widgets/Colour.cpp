#include "widgets/Colour.h"

#include "layouttext/ValueSyntax.h"
#include "platform/SystemSettings.h"

namespace {

constexpr int kButtonFaceIndex = 15;
constexpr int kButtonShadowIndex = 16;
constexpr int kButtonHighlightIndex = 20;
constexpr int kLight3dIndex = 22;

std::uint32_t SystemArgb(int index)
{
    return ArgbFromColorRef(platform::GetSystemColour(index));
}

} // namespace

std::uint32_t ArgbFromColorRef(std::uint32_t colorRef)
{
    const std::uint32_t red = colorRef & 0xFF;
    const std::uint32_t green = (colorRef >> 8) & 0xFF;
    const std::uint32_t blue = (colorRef >> 16) & 0xFF;
    return 0xFF000000u | red << 16 | green << 8 | blue;
}

std::uint32_t ButtonFaceColour()
{
    return SystemArgb(kButtonFaceIndex);
}

std::uint32_t ButtonShadowColour()
{
    return SystemArgb(kButtonShadowIndex);
}

std::uint32_t ButtonHighlightColour()
{
    return SystemArgb(kButtonHighlightIndex);
}

std::uint32_t LightColour3d()
{
    return SystemArgb(kLight3dIndex);
}

// Scans like "%x" into a value that starts at 0: leading blanks, a sign and
// 0x are taken, the digits end at the first other unit, and a text that
// doesn't scan gives 0. Brushes want 0 for a text that converts nothing and
// the other widgets want the scanned value; as the scan starts from 0 the
// two are the same number, so one function serves both.
std::uint32_t ParseHexColor(const WideString& text)
{
    return ScanHex(text.View());
}
