#include "engine/ViewerBase.h"

#include "platform/Graphics.h"
#include "platform/Region.h"
#include "platform/SystemSettings.h"

#include <algorithm>

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

// Repaints rect, in logical units, into the backing bitmap, and adds it to
// the area the window has yet to be told of. Opaque widgets are drawn
// first, from the top down, each only where no opaque widget above it lies;
// then the others from the bottom up, with the opaque area above them cut
// away. Where two widgets really overlap the order stays bottom to top, so
// the outcome is a plain painter's walk without the overdrawn pixels. A
// failing region operation leaves what the region holds and the walk goes
// on. False only without a bitmap or a usable scale.
bool ViewerBase::PaintRect(const RectF& rect)
{
    const float scale = GetScale();
    if (Bitmap == nullptr || !(scale > 0))
        return false;
    platform::Graphics graphics(*Bitmap);
    graphics.ScaleWorldTransform(scale, scale);
    graphics.TranslateWorldTransform(-LogicalOriginX, -LogicalOriginY);

    // Entry n is the area covered by the opaque widgets from the top down
    // to the n-th opaque one met on the way down.
    Array<std::unique_ptr<platform::Region>> coveredStack;
    for (std::size_t index = Widgets.Count(); index-- > 0;) {
        Widget* widget = Widgets.At(index).get();
        if (!IsShown(widget) || !widget->IsOpaque())
            continue;
        std::unique_ptr<platform::Region> covered =
            coveredStack.IsEmpty() ? nullptr : coveredStack.At(coveredStack.Count() - 1)->Clone();
        if (covered == nullptr) {
            covered = std::make_unique<platform::Region>();
            covered->MakeEmpty();
        }
        platform::Region& top = *coveredStack.Add(std::move(covered));
        const RectF r = widget->GetRect();
        if (r.width < 0 || r.height < 0)
            continue;
        platform::Region visible(r.x, r.y, r.width, r.height);
        visible.CombineRect(rect.x, rect.y, rect.width, rect.height, platform::CombineMode::Intersect);
        visible.CombineRegion(top, platform::CombineMode::Exclude);
        platform::RegionBounds bounds;
        if (!visible.IsEmpty(graphics)) {
            graphics.SetClipRegion(visible);
            if (visible.GetBounds(graphics, bounds)) {
                widget->Draw(graphics, {bounds.x, bounds.y, bounds.width, bounds.height});
                top.CombineRect(bounds.x, bounds.y, bounds.width, bounds.height, platform::CombineMode::Union);
            }
        }
    }

    for (std::size_t index = 0; index < Widgets.Count(); ++index) {
        Widget* widget = Widgets.At(index).get();
        if (!IsShown(widget))
            continue;
        // From here on only the opaque widgets above this one count.
        if (widget->IsOpaque()) {
            if (!coveredStack.IsEmpty())
                coveredStack.RemoveLast();
            continue;
        }
        const RectF r = widget->GetRect();
        if (r.width < 0 || r.height < 0)
            continue;
        platform::Region visible(r.x, r.y, r.width, r.height);
        visible.CombineRect(rect.x, rect.y, rect.width, rect.height, platform::CombineMode::Intersect);
        if (!coveredStack.IsEmpty())
            visible.CombineRegion(*coveredStack.At(coveredStack.Count() - 1), platform::CombineMode::Exclude);
        graphics.SetClipRegion(visible);
        platform::RegionBounds bounds;
        if (!visible.IsEmpty(graphics) && visible.GetBounds(graphics, bounds))
            widget->Draw(graphics, {bounds.x, bounds.y, bounds.width, bounds.height});
    }

    if (IsEmptyRect(DirtyRect)) {
        DirtyRect = rect;
    } else {
        const float left = std::min(DirtyRect.x, rect.x);
        const float top = std::min(DirtyRect.y, rect.y);
        const float right = std::max(DirtyRect.x + DirtyRect.width, rect.x + rect.width);
        const float bottom = std::max(DirtyRect.y + DirtyRect.height, rect.y + rect.height);
        DirtyRect = {left, top, right - left, bottom - top};
    }
    return true;
}

// Repaints the whole bitmap.
bool ViewerBase::PaintAll()
{
    const float scale = GetScale();
    if (!(scale > 0))
        return false;
    const RectF bitmap = GetBitmapRect();
    return PaintRect({LogicalFromDeviceX(DeviceOriginX), LogicalFromDeviceY(DeviceOriginY), bitmap.width / scale,
                      bitmap.height / scale});
}

// Copies the bitmap unscaled to the part of context that needs painting.
// True when the copy worked.
bool ViewerBase::Blit(platform::DeviceContextHandle context)
{
    if (context == nullptr || Bitmap == nullptr)
        return false;
    platform::PixelRect box;
    const bool hasBox = platform::GetContextClipBox(context, box);
    platform::Graphics graphics(context);
    if (hasBox)
        graphics.SetClipRect(static_cast<float>(box.left), static_cast<float>(box.top),
                             static_cast<float>(box.Width()), static_cast<float>(box.Height()));
    return graphics.DrawImage(*Bitmap, 0, 0);
}

bool ViewerBase::IsShown(const Widget* widget) const
{
    return widget != nullptr && widget->IsVisible() && widget->IsInGroup(CurrentGroup);
}

// Empty unless both sides are above the float epsilon.
bool ViewerBase::IsEmptyRect(const RectF& rect)
{
    constexpr float kEpsilon = 1.1920929e-7f;
    return !(rect.width > kEpsilon) || !(rect.height > kEpsilon);
}
