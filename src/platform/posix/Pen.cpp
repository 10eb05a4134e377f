#include "platform/Pen.h"

#include "platform/Font.h"
#include "platform/Graphics.h"
#include "platform/posix/Drawing.h"

#include <new>

namespace platform {

Pen::Pen(std::uint32_t argb, float width) : native(new (std::nothrow) PenObject{argb, width, 0})
{
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

Pen::~Pen()
{
    delete native;
}

bool Pen::SetColor(std::uint32_t argb)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->argb = argb;
    return true;
}

bool Pen::SetWidth(float width)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->width = width;
    return true;
}

bool Pen::SetLineJoin(std::int32_t join)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->lineJoin = join;
    return true;
}

GraphicsPath::GraphicsPath() : native(new (std::nothrow) PathObject)
{
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

GraphicsPath::~GraphicsPath()
{
    delete native;
}

// The path keeps the string as it was laid out; drawing the path records it.
bool GraphicsPath::AddString(std::u16string_view text, FontFamily& family, std::int32_t style, float emSize, float x,
                             float y, float width, float height, StringFormat& format)
{
    if (native == nullptr || family.GetNative() == nullptr || format.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    testing::DrawnText added;
    added.text = std::u16string(text);
    added.family = family.GetNative()->name;
    added.size = emSize;
    added.style = style;
    added.x = x;
    added.y = y;
    added.width = width;
    added.height = height;
    added.alignment = format.GetNative()->alignment;
    added.lineAlignment = format.GetNative()->lineAlignment;
    added.formatFlags = format.GetNative()->flags;
    native->strings.push_back(added);
    return true;
}

} // namespace platform
