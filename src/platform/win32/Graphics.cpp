#include "platform/Graphics.h"

#include "platform/Bitmap.h"
#include "platform/win32/GdiplusFlat.h"
#include "platform/win32/WinHandles.h"

namespace platform {

Graphics::Graphics(DeviceContextHandle context)
{
    GpGraphics* graphics = nullptr;
    status = Gdiplus::DllExports::GdipCreateFromHDC(win32::Hdc(context), &graphics);
    native = win32::Wrap(graphics);
}

Graphics::Graphics(Image& image)
{
    GpGraphics* graphics = nullptr;
    status = Gdiplus::DllExports::GdipGetImageGraphicsContext(win32::Native(image.GetNative()), &graphics);
    native = win32::Wrap(graphics);
}

Graphics::~Graphics()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeleteGraphics(win32::Native(native));
}

float Graphics::GetDpiX()
{
    float dpi = 0;
    const Gdiplus::Status result = Gdiplus::DllExports::GdipGetDpiX(win32::Native(native), &dpi);
    if (result != Gdiplus::Ok) {
        status = result;
        return 0;
    }
    return dpi;
}

namespace {

// Keeps a failing status in the wrapper; true for success.
bool Keep(int& status, Gdiplus::Status result)
{
    if (result != Gdiplus::Ok)
        status = result;
    return result == Gdiplus::Ok;
}

} // namespace

bool Graphics::ScaleWorldTransform(float sx, float sy)
{
    return Keep(status, Gdiplus::DllExports::GdipScaleWorldTransform(win32::Native(native), sx, sy,
                                                                     Gdiplus::MatrixOrderPrepend));
}

bool Graphics::TranslateWorldTransform(float dx, float dy)
{
    return Keep(status, Gdiplus::DllExports::GdipTranslateWorldTransform(win32::Native(native), dx, dy,
                                                                         Gdiplus::MatrixOrderPrepend));
}

bool Graphics::SetClipRect(float x, float y, float width, float height)
{
    return Keep(status, Gdiplus::DllExports::GdipSetClipRect(win32::Native(native), x, y, width, height,
                                                             Gdiplus::CombineModeReplace));
}

bool Graphics::SetClipRegion(Region& region)
{
    return Keep(status, Gdiplus::DllExports::GdipSetClipRegion(win32::Native(native), win32::Native(region.GetNative()),
                                                               Gdiplus::CombineModeReplace));
}

GraphicsState Graphics::Save()
{
    Gdiplus::GraphicsState state = 0;
    Keep(status, Gdiplus::DllExports::GdipSaveGraphics(win32::Native(native), &state));
    return state;
}

bool Graphics::Restore(GraphicsState state)
{
    return Keep(status, Gdiplus::DllExports::GdipRestoreGraphics(win32::Native(native), state));
}

bool Graphics::DrawImage(Image& image, int x, int y)
{
    return Keep(status, Gdiplus::DllExports::GdipDrawImageI(win32::Native(native), win32::Native(image.GetNative()), x, y));
}

bool Graphics::FillRectangle(SolidBrush& brush, float x, float y, float width, float height)
{
    return Keep(status, Gdiplus::DllExports::GdipFillRectangle(win32::Native(native), win32::Native(brush.GetNative()),
                                                               x, y, width, height));
}

} // namespace platform
