#pragma once

#include "platform/ControlFont.h"

// Owns the font of one edit control, which must outlive the control's use
// of it. Held by a TextBox; main window's thread only. Not copied.
class FontHandle {
public:
    explicit FontHandle(platform::ControlFontHandle font) : Font(font) {}
    ~FontHandle();
    FontHandle(const FontHandle&) = delete;
    FontHandle& operator=(const FontHandle&) = delete;

    platform::ControlFontHandle Get() const { return Font; }

private:
    platform::ControlFontHandle Font;
};
