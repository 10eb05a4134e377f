#include "platform/Region.h"

#include "platform/win32/GdiplusFlat.h"

namespace platform {

namespace {

Gdiplus::CombineMode NativeMode(CombineMode mode)
{
    return static_cast<Gdiplus::CombineMode>(mode);
}

} // namespace

Region::Region()
{
    GpRegion* region = nullptr;
    status = Gdiplus::DllExports::GdipCreateRegion(&region);
    native = win32::Wrap(region);
}

Region::Region(float x, float y, float width, float height)
{
    GpRegion* region = nullptr;
    const Gdiplus::RectF rect(x, y, width, height);
    status = Gdiplus::DllExports::GdipCreateRegionRect(&rect, &region);
    native = win32::Wrap(region);
}

Region::~Region()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeleteRegion(win32::Native(native));
}

std::unique_ptr<Region> Region::Clone()
{
    GpRegion* copy = nullptr;
    const Gdiplus::Status result = Gdiplus::DllExports::GdipCloneRegion(win32::Native(native), &copy);
    if (result != Gdiplus::Ok) {
        status = result;
        return nullptr;
    }
    return std::unique_ptr<Region>(new Region(win32::Wrap(copy)));
}

bool Region::MakeEmpty()
{
    const Gdiplus::Status result = Gdiplus::DllExports::GdipSetEmpty(win32::Native(native));
    if (result != Gdiplus::Ok)
        status = result;
    return result == Gdiplus::Ok;
}

bool Region::CombineRect(float x, float y, float width, float height, CombineMode mode)
{
    const Gdiplus::RectF rect(x, y, width, height);
    const Gdiplus::Status result =
        Gdiplus::DllExports::GdipCombineRegionRect(win32::Native(native), &rect, NativeMode(mode));
    if (result != Gdiplus::Ok)
        status = result;
    return result == Gdiplus::Ok;
}

bool Region::CombineRegion(Region& other, CombineMode mode)
{
    const Gdiplus::Status result = Gdiplus::DllExports::GdipCombineRegionRegion(
        win32::Native(native), win32::Native(other.native), NativeMode(mode));
    if (result != Gdiplus::Ok)
        status = result;
    return result == Gdiplus::Ok;
}

bool Region::IsEmpty(Graphics& graphics)
{
    BOOL empty = FALSE;
    const Gdiplus::Status result =
        Gdiplus::DllExports::GdipIsEmptyRegion(win32::Native(native), win32::Native(graphics.GetNative()), &empty);
    if (result != Gdiplus::Ok) {
        status = result;
        return false;
    }
    return empty != FALSE;
}

bool Region::GetBounds(Graphics& graphics, RegionBounds& bounds)
{
    Gdiplus::RectF rect;
    const Gdiplus::Status result =
        Gdiplus::DllExports::GdipGetRegionBounds(win32::Native(native), win32::Native(graphics.GetNative()), &rect);
    if (result != Gdiplus::Ok) {
        status = result;
        return false;
    }
    bounds = {rect.X, rect.Y, rect.Width, rect.Height};
    return true;
}

} // namespace platform
