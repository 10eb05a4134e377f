#include "platform/ControlFont.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>

// The font description record holds no pointer; 32-bit Windows takes it at
// 92 bytes.
#if defined(_WIN32) && !defined(_WIN64)
static_assert(sizeof(LOGFONTW) == 92, "a LOGFONTW is 92 bytes on 32-bit Windows");
#endif

namespace platform {

// The size goes into the record as tenths, becomes pixels of the screen's
// vertical resolution (720 tenths of a point to the inch), and those
// pixels become logical units of the screen's context; the negative
// height asks for the height of the characters, not of their cells.
ControlFontHandle CreateControlFont(std::int32_t tenths, std::u16string_view faceName)
{
    LOGFONTW font{};
    font.lfHeight = tenths;
    font.lfCharSet = DEFAULT_CHARSET;
    const std::size_t length = std::min<std::size_t>(faceName.size(), LF_FACESIZE - 1);
    std::copy_n(faceName.data(), length, font.lfFaceName);

    HDC screen = GetDC(nullptr);
    POINT points[2] = {{0, MulDiv(GetDeviceCaps(screen, LOGPIXELSY), font.lfHeight, 720)}, {0, 0}};
    DPtoLP(screen, points, 2);
    font.lfHeight = -std::abs(points[0].y - points[1].y);
    ReleaseDC(nullptr, screen);

    return reinterpret_cast<ControlFontHandle>(CreateFontIndirectW(&font));
}

void DeleteControlFont(ControlFontHandle font)
{
    if (font != nullptr)
        DeleteObject(reinterpret_cast<HFONT>(font));
}

} // namespace platform
