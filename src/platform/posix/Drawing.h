#pragma once

#include "platform/Bitmap.h"
#include "platform/Graphics.h"
#include "platform/SolidBrush.h"

#include <cstdint>
#include <memory>

// The stand-in's GDI+ objects: images are ARGB pixels in memory, and a
// drawing surface is the image it draws into, or nothing for a device
// context, whose pixels the stand-in doesn't keep.

struct platform::ImageObject {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float dpi = 0;
    // Rows from the top, ARGB.
    std::unique_ptr<std::uint32_t[]> pixels;
};

struct platform::GraphicsObject {
    ImageObject* image = nullptr;
    float dpi = 0;
};

struct platform::BrushObject {
    std::uint32_t argb = 0;
};

namespace platform::posix {

// colour laid over pixel as GDI+ composites by default: the source over
// what is there, with straight (not premultiplied) alpha.
std::uint32_t BlendSourceOver(std::uint32_t pixel, std::uint32_t colour);

} // namespace platform::posix
