#include "platform/Bitmap.h"

#include "platform/Graphics.h"
#include "platform/standin/Drawing.h"

#include <cstddef>
#include <new>

namespace platform {

namespace {

// A bitmap larger than this many pixels is refused as GDI+ refuses one
// whose memory it can't get.
constexpr std::size_t kMaxPixels = std::size_t(1) << 28;

} // namespace

Image::~Image()
{
    delete native;
}

std::uint32_t Image::GetWidth()
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return 0;
    }
    return native->width;
}

std::uint32_t Image::GetHeight()
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return 0;
    }
    return native->height;
}

// A fresh bitmap is transparent black. Sizes of 0 and below are refused,
// as GDI+ refuses them.
Bitmap::Bitmap(std::int32_t width, std::int32_t height, Graphics& graphics)
{
    if (graphics.GetNative() == nullptr || width <= 0 || height <= 0) {
        status = kGdiplusInvalidParameter;
        return;
    }
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (count > kMaxPixels) {
        status = kGdiplusOutOfMemory;
        return;
    }
    native = new (std::nothrow) ImageObject;
    if (native == nullptr) {
        status = kGdiplusOutOfMemory;
        return;
    }
    native->width = static_cast<std::uint32_t>(width);
    native->height = static_cast<std::uint32_t>(height);
    native->dpi = graphics.GetNative()->dpi;
    native->pixels.reset(new (std::nothrow) std::uint32_t[count]());
    if (native->pixels == nullptr) {
        delete native;
        native = nullptr;
        status = kGdiplusOutOfMemory;
    }
}

bool Bitmap::GetPixel(std::int32_t x, std::int32_t y, std::uint32_t& argb)
{
    if (native == nullptr || x < 0 || y < 0 || static_cast<std::uint32_t>(x) >= native->width ||
        static_cast<std::uint32_t>(y) >= native->height) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    argb = native->pixels[static_cast<std::size_t>(y) * native->width + static_cast<std::size_t>(x)];
    return true;
}

} // namespace platform
