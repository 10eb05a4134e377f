#include "platform/Graphics.h"

#include "platform/SystemSettings.h"
#include "platform/posix/Drawing.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>

namespace platform {

namespace {

// The first pixel whose centre lies at or behind coordinate. Far outside
// the range of a bitmap everything clamps.
std::int64_t PixelFrom(float coordinate)
{
    double pixel = std::ceil(static_cast<double>(coordinate) - 0.5);
    if (std::isnan(pixel))
        pixel = 0;
    return static_cast<std::int64_t>(std::clamp(pixel, -1e12, 1e12));
}

} // namespace

Graphics::Graphics(DeviceContextHandle context)
{
    if (context == nullptr) {
        status = kGdiplusInvalidParameter;
        return;
    }
    native = new (std::nothrow) GraphicsObject{nullptr, static_cast<float>(GetScreenDpiX())};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

Graphics::Graphics(Image& image)
{
    if (image.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return;
    }
    native = new (std::nothrow) GraphicsObject{image.GetNative(), image.GetNative()->dpi};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

Graphics::~Graphics()
{
    delete native;
}

float Graphics::GetDpiX()
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return 0;
    }
    return native->dpi;
}

// Fills the pixels whose centres lie inside the rectangle. A surface on a
// device context has no pixels to fill and only checks its arguments.
bool Graphics::FillRectangle(SolidBrush& brush, float x, float y, float width, float height)
{
    if (native == nullptr || brush.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    ImageObject* image = native->image;
    if (image == nullptr || !(width > 0) || !(height > 0))
        return true;
    const std::int64_t left = std::max<std::int64_t>(0, PixelFrom(x));
    const std::int64_t top = std::max<std::int64_t>(0, PixelFrom(y));
    const std::int64_t right = std::min<std::int64_t>(image->width, PixelFrom(x + width));
    const std::int64_t bottom = std::min<std::int64_t>(image->height, PixelFrom(y + height));
    const std::uint32_t colour = brush.GetNative()->argb;
    for (std::int64_t row = top; row < bottom; ++row) {
        std::uint32_t* line = image->pixels.get() + row * image->width;
        for (std::int64_t column = left; column < right; ++column)
            line[column] = posix::BlendSourceOver(line[column], colour);
    }
    return true;
}

std::uint32_t posix::BlendSourceOver(std::uint32_t pixel, std::uint32_t colour)
{
    const std::uint32_t sourceAlpha = colour >> 24;
    if (sourceAlpha == 0xFF)
        return colour;
    if (sourceAlpha == 0)
        return pixel;
    const std::uint32_t pixelAlpha = pixel >> 24;
    // Alphas in 255ths; the result's alpha is a + b (1 - a).
    const std::uint32_t underneath = pixelAlpha * (255 - sourceAlpha) / 255;
    const std::uint32_t alpha = sourceAlpha + underneath;
    std::uint32_t result = alpha << 24;
    for (int shift = 0; shift < 24; shift += 8) {
        const std::uint32_t source = (colour >> shift) & 0xFF;
        const std::uint32_t below = (pixel >> shift) & 0xFF;
        result |= ((source * sourceAlpha + below * underneath) / alpha) << shift;
    }
    return result;
}

} // namespace platform
