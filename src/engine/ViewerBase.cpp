#include "engine/ViewerBase.h"

#include "platform/Graphics.h"
#include "platform/SystemSettings.h"

namespace {

// The screen's resolution is read once: it doesn't change under a running
// program that isn't told of it.
double ScreenDpi()
{
    static const double dpi = platform::GetScreenDpiX();
    return dpi;
}

} // namespace

// A layout without a resolution of its own is drawn one unit to the pixel.
// On its own screen a layout is drawn at Zoom; elsewhere it grows with the
// ratio of the screen's resolution to its own, so a layout written for 96
// DPI is 1.25 times as large on a screen of 120.
float ScaleForResolution(double screenDpi, float layoutDpi, float zoom)
{
    if (layoutDpi <= 0)
        return 1.0f;
    if (screenDpi == layoutDpi)
        return zoom;
    return static_cast<float>(screenDpi * zoom / layoutDpi);
}

// Units

float ViewerBase::GetScale()
{
    if (Dpi <= 0)
        return 1.0f;
    return ScaleForResolution(ScreenDpi(), Dpi, Zoom);
}

float ViewerBase::GetViewWidth()
{
    if (ViewWidth > 0)
        return ViewWidth;
    return GetBitmapRect().width;
}

float ViewerBase::GetViewHeight()
{
    if (ViewHeight > 0)
        return ViewHeight;
    return GetBitmapRect().height;
}

RectF ViewerBase::GetBitmapRect()
{
    if (Bitmap == nullptr)
        return {};
    return {0, 0, static_cast<float>(Bitmap->GetWidth()), static_cast<float>(Bitmap->GetHeight())};
}

float ViewerBase::DeviceFromLogicalX(float logical)
{
    return (logical - LogicalOriginX) * GetScale() + DeviceOriginX;
}

float ViewerBase::DeviceFromLogicalY(float logical)
{
    return (logical - LogicalOriginY) * GetScale() + DeviceOriginY;
}

// Without a usable scale every device point is at logical 0.
float ViewerBase::LogicalFromDeviceX(float device)
{
    const float scale = GetScale();
    if (scale <= 0)
        return 0;
    return (device - DeviceOriginX) / scale + LogicalOriginX;
}

float ViewerBase::LogicalFromDeviceY(float device)
{
    const float scale = GetScale();
    if (scale <= 0)
        return 0;
    return (device - DeviceOriginY) / scale + LogicalOriginY;
}

// The new bitmap replaces the old one even when GDI+ refused to make it, as
// for a size of 0; the view then has no extent until the next resize. False
// only when no drawing surface could be had for context, and the old
// bitmap stays. A layout that didn't name its resolution takes the
// window's here.
bool ViewerBase::Resize(platform::DeviceContextHandle context, int width, int height)
{
    if (width < 0 || height < 0) {
        Bitmap.reset();
        return true;
    }
    platform::Graphics graphics(context);
    if (!graphics.IsValid())
        return false;
    Bitmap = std::make_unique<platform::Bitmap>(width, height, graphics);
    if (Dpi == 0)
        Dpi = graphics.GetDpiX();
    return true;
}

bool ViewerBase::HasWidget(std::size_t index) const
{
    return index < Widgets.Count() && Widgets.At(index) != nullptr;
}
