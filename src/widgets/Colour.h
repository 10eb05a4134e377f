#pragma once

#include "base/WideString.h"

#include <cstdint>

// The colours of the widgets: 32-bit ARGB values, alpha in the top byte.

// A system colour (red in the low byte) as an opaque ARGB colour.
std::uint32_t ArgbFromColorRef(std::uint32_t colorRef);

// The four colours of the system's scheme that widgets draw with.
std::uint32_t ButtonFaceColour();
std::uint32_t ButtonShadowColour();
std::uint32_t ButtonHighlightColour();
std::uint32_t LightColour3d();

// A colour written in hexadecimal, with or without 0x.
std::uint32_t ParseHexColor(const WideString& text);
