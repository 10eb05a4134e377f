#pragma once

#include <cstdint>
#include <string_view>

// The fonts of the system's native controls, which draw their own text:
// an edit control gets one by the set-font message with the handle as
// wParam. Unlike the GDI+ fonts of the widgets, a control's font lives as
// long as the control uses it. Main window's thread only.
namespace platform {

struct ControlFontObject;
using ControlFontHandle = ControlFontObject*;

// A font of the family faceName, cut to 31 characters, in the default
// character set, whose characters are tenths tenths of a point high on the
// screen. Null when the system made none.
ControlFontHandle CreateControlFont(std::int32_t tenths, std::u16string_view faceName);
void DeleteControlFont(ControlFontHandle font);

} // namespace platform
