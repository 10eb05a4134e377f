#include "platform/Pen.h"

#include "platform/Font.h"
#include "platform/Graphics.h"
#include "platform/standin/Drawing.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <string>

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

namespace {

std::string Point(float x, float y)
{
    char text[48];
    std::snprintf(text, sizeof text, "%g,%g", x, y);
    return text;
}

void Extend(PathObject& path, float x, float y)
{
    if (!path.around)
        path.around = standin::Box{x, y, x, y};
    path.around->left = std::min(path.around->left, x);
    path.around->top = std::min(path.around->top, y);
    path.around->right = std::max(path.around->right, x);
    path.around->bottom = std::max(path.around->bottom, y);
}

} // namespace

bool GraphicsPath::AddLine(float x1, float y1, float x2, float y2)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->figures.push_back("line " + Point(x1, y1) + " " + Point(x2, y2));
    Extend(*native, x1, y1);
    Extend(*native, x2, y2);
    return true;
}

bool GraphicsPath::AddCurve(const float (&points)[6])
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->figures.push_back("curve " + Point(points[0], points[1]) + " " + Point(points[2], points[3]) + " " +
                              Point(points[4], points[5]));
    for (int i = 0; i < 6; i += 2)
        Extend(*native, points[i], points[i + 1]);
    return true;
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
