#include "platform/Graphics.h"

#include "platform/Bitmap.h"
#include "platform/Font.h"
#include "platform/Pen.h"
#include "platform/Region.h"
#include "platform/SolidBrush.h"
#include "platform/standin/Drawing.h"
#include "platform/SystemSettings.h"

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

// Calls paint(column, row) for each pixel of image whose centre lies in
// box, a box in device pixels.
template <typename Paint>
void ForEachPixel(const ImageObject& image, const standin::Box& box, Paint paint)
{
    const std::int64_t left = std::max<std::int64_t>(0, PixelFrom(box.left));
    const std::int64_t top = std::max<std::int64_t>(0, PixelFrom(box.top));
    const std::int64_t right = std::min<std::int64_t>(image.width, PixelFrom(box.right));
    const std::int64_t bottom = std::min<std::int64_t>(image.height, PixelFrom(box.bottom));
    for (std::int64_t row = top; row < bottom; ++row) {
        for (std::int64_t column = left; column < right; ++column)
            paint(column, row);
    }
}

// The parts of box, in device pixels, that the clip lets through.
standin::BoxList Clipped(const GraphicsObject& graphics, const standin::Box& box)
{
    const standin::BoxList whole = box.HasArea() ? standin::BoxList{box} : standin::BoxList{};
    return graphics.clip ? standin::Intersected(whole, *graphics.clip) : whole;
}

} // namespace

standin::Box standin::Transform::ToDevice(const Box& box) const
{
    const float x1 = box.left * scaleX + offsetX;
    const float x2 = box.right * scaleX + offsetX;
    const float y1 = box.top * scaleY + offsetY;
    const float y2 = box.bottom * scaleY + offsetY;
    return {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2)};
}

Graphics::Graphics(DeviceContextHandle context)
{
    if (context == nullptr) {
        status = kGdiplusInvalidParameter;
        return;
    }
    native = new (std::nothrow) GraphicsObject{nullptr, static_cast<float>(GetScreenDpiX()), {}, {}, {}, 0, 0};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

Graphics::Graphics(Image& image)
{
    if (image.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return;
    }
    native = new (std::nothrow) GraphicsObject{image.GetNative(), image.GetNative()->dpi, {}, {}, {}, 0, 0};
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

// Both steps go in front of the transform there is: the point is scaled or
// moved first, then mapped as before.
bool Graphics::ScaleWorldTransform(float sx, float sy)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->transform.scaleX *= sx;
    native->transform.scaleY *= sy;
    return true;
}

bool Graphics::TranslateWorldTransform(float dx, float dy)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->transform.offsetX += dx * native->transform.scaleX;
    native->transform.offsetY += dy * native->transform.scaleY;
    return true;
}

// The clip is kept in device pixels, as it was mapped when it was set.
bool Graphics::SetClipRect(float x, float y, float width, float height)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    standin::BoxList clip;
    for (const standin::Box& box : standin::BoxFrom(x, y, width, height))
        clip.push_back(native->transform.ToDevice(box));
    native->clip = clip;
    return true;
}

bool Graphics::SetClipRegion(Region& region)
{
    if (native == nullptr || region.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    standin::BoxList clip;
    for (const standin::Box& box : region.GetNative()->boxes)
        clip.push_back(native->transform.ToDevice(box));
    native->clip = clip;
    return true;
}

// The stand-in clips to the box around the path's points, which is the
// path itself for the rectangles it is used with.
bool Graphics::SetClipPath(GraphicsPath& path)
{
    if (native == nullptr || path.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    standin::BoxList clip;
    if (path.GetNative()->around)
        clip.push_back(native->transform.ToDevice(*path.GetNative()->around));
    native->clip = clip;
    return true;
}

// States count from 1; restoring one forgets the states saved after it.
GraphicsState Graphics::Save()
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return 0;
    }
    native->saved.push_back({native->transform, native->clip});
    return static_cast<GraphicsState>(native->saved.size());
}

bool Graphics::Restore(GraphicsState state)
{
    if (native == nullptr || state == 0 || state > native->saved.size()) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->transform = native->saved[state - 1].transform;
    native->clip = native->saved[state - 1].clip;
    native->saved.resize(state - 1);
    return true;
}

// Fills the pixels whose centres lie inside the rectangle and the clip. A
// surface on a device context has no pixels to fill and only checks its
// arguments.
bool Graphics::FillRectangle(SolidBrush& brush, float x, float y, float width, float height)
{
    if (native == nullptr || brush.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    ImageObject* image = native->image;
    if (image == nullptr)
        return true;
    const std::uint32_t colour = brush.GetNative()->argb;
    for (const standin::Box& piece : standin::BoxFrom(x, y, width, height)) {
        for (const standin::Box& part : Clipped(*native, native->transform.ToDevice(piece))) {
            ForEachPixel(*image, part, [&](std::int64_t column, std::int64_t row) {
                std::uint32_t& pixel = image->pixels[static_cast<std::size_t>(row * image->width + column)];
                pixel = standin::BlendSourceOver(pixel, colour);
            });
        }
    }
    return true;
}

// Lays image over the surface pixel for pixel, through the clip; the world
// transform plays no part, as the image is drawn unscaled at device x, y.
bool Graphics::DrawImage(Image& image, int x, int y)
{
    if (native == nullptr || image.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    ImageObject* target = native->image;
    const ImageObject& source = *image.GetNative();
    if (target == nullptr)
        return true;
    const standin::Box area{static_cast<float>(x), static_cast<float>(y), static_cast<float>(x) + source.width,
                          static_cast<float>(y) + source.height};
    for (const standin::Box& part : Clipped(*native, area)) {
        ForEachPixel(*target, part, [&](std::int64_t column, std::int64_t row) {
            const std::uint32_t colour = source.pixels[static_cast<std::size_t>((row - y) * source.width + (column - x))];
            std::uint32_t& pixel = target->pixels[static_cast<std::size_t>(row * target->width + column)];
            pixel = standin::BlendSourceOver(pixel, colour);
        });
    }
    return true;
}

// Strings aren't rendered; what was drawn goes to the record of drawn texts.
bool Graphics::DrawString(std::u16string_view text, Font& font, float x, float y, float width, float height,
                          StringFormat& format, SolidBrush& brush)
{
    if (native == nullptr || font.GetNative() == nullptr || format.GetNative() == nullptr ||
        brush.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    testing::DrawnText drawn;
    drawn.text = std::u16string(text);
    drawn.family = font.GetNative()->family;
    drawn.size = font.GetNative()->size;
    drawn.style = font.GetNative()->style;
    drawn.x = x;
    drawn.y = y;
    drawn.width = width;
    drawn.height = height;
    drawn.alignment = format.GetNative()->alignment;
    drawn.lineAlignment = format.GetNative()->lineAlignment;
    drawn.formatFlags = format.GetNative()->flags;
    drawn.colour = brush.GetNative()->argb;
    drawn.smoothingMode = native->smoothingMode;
    drawn.textRenderingHint = native->textRenderingHint;
    standin::RecordDrawnText(drawn);
    return true;
}

bool Graphics::DrawPath(Pen& pen, GraphicsPath& path)
{
    if (native == nullptr || pen.GetNative() == nullptr || path.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    if (!path.GetNative()->figures.empty())
        standin::RecordDrawnPath({path.GetNative()->figures, pen.GetNative()->argb, pen.GetNative()->width,
                                native->smoothingMode});
    for (testing::DrawnText drawn : path.GetNative()->strings) {
        drawn.kind = testing::DrawnText::Kind::PathOutline;
        drawn.colour = pen.GetNative()->argb;
        drawn.penWidth = pen.GetNative()->width;
        drawn.penLineJoin = pen.GetNative()->lineJoin;
        drawn.smoothingMode = native->smoothingMode;
        drawn.textRenderingHint = native->textRenderingHint;
        standin::RecordDrawnText(drawn);
    }
    return true;
}

bool Graphics::FillPath(SolidBrush& brush, GraphicsPath& path)
{
    if (native == nullptr || brush.GetNative() == nullptr || path.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    for (testing::DrawnText drawn : path.GetNative()->strings) {
        drawn.kind = testing::DrawnText::Kind::PathFill;
        drawn.colour = brush.GetNative()->argb;
        drawn.smoothingMode = native->smoothingMode;
        drawn.textRenderingHint = native->textRenderingHint;
        standin::RecordDrawnText(drawn);
    }
    return true;
}

std::int32_t Graphics::GetSmoothingMode()
{
    return native != nullptr ? native->smoothingMode : 0;
}

bool Graphics::SetSmoothingMode(std::int32_t mode)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->smoothingMode = mode;
    return true;
}

std::int32_t Graphics::GetTextRenderingHint()
{
    return native != nullptr ? native->textRenderingHint : 0;
}

bool Graphics::SetTextRenderingHint(std::int32_t hint)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->textRenderingHint = hint;
    return true;
}

std::uint32_t standin::BlendSourceOver(std::uint32_t pixel, std::uint32_t colour)
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
