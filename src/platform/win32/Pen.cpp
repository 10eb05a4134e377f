#include "platform/Pen.h"

#include "platform/Font.h"
#include "platform/win32/GdiplusFlat.h"
#include "platform/win32/WinText.h"

#include <string>

namespace platform {

using win32::Keep;

Pen::Pen(std::uint32_t argb, float width)
{
    GpPen* pen = nullptr;
    status = Gdiplus::DllExports::GdipCreatePen1(argb, width, Gdiplus::UnitWorld, &pen);
    native = win32::Wrap(pen);
}

Pen::~Pen()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeletePen(win32::Native(native));
}

bool Pen::SetColor(std::uint32_t argb)
{
    return Keep(status, Gdiplus::DllExports::GdipSetPenColor(win32::Native(native), argb));
}

bool Pen::SetWidth(float width)
{
    return Keep(status, Gdiplus::DllExports::GdipSetPenWidth(win32::Native(native), width));
}

bool Pen::SetLineJoin(std::int32_t join)
{
    return Keep(status, Gdiplus::DllExports::GdipSetPenLineJoin(win32::Native(native),
                                                                static_cast<Gdiplus::LineJoin>(join)));
}

GraphicsPath::GraphicsPath()
{
    GpPath* path = nullptr;
    status = Gdiplus::DllExports::GdipCreatePath(Gdiplus::FillModeAlternate, &path);
    native = win32::Wrap(path);
}

GraphicsPath::~GraphicsPath()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeletePath(win32::Native(native));
}

bool GraphicsPath::AddLine(float x1, float y1, float x2, float y2)
{
    return Keep(status, Gdiplus::DllExports::GdipAddPathLine(win32::Native(native), x1, y1, x2, y2));
}

bool GraphicsPath::AddCurve(const float (&points)[6])
{
    const Gdiplus::PointF native3[3] = {{points[0], points[1]}, {points[2], points[3]}, {points[4], points[5]}};
    return Keep(status, Gdiplus::DllExports::GdipAddPathCurve(win32::Native(native), native3, 3));
}

bool GraphicsPath::AddString(std::u16string_view text, FontFamily& family, std::int32_t style, float emSize, float x,
                             float y, float width, float height, StringFormat& format)
{
    const std::u16string terminated = win32::LayoutText(text);
    const Gdiplus::RectF layout(x, y, width, height);
    return Keep(status, Gdiplus::DllExports::GdipAddPathString(
                            win32::Native(native), win32::Text(terminated), static_cast<INT>(terminated.size()),
                            win32::Native(family.GetNative()), style, emSize, &layout,
                            win32::Native(format.GetNative())));
}

} // namespace platform
