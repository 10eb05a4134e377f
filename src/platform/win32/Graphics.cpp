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

bool Graphics::FillRectangle(SolidBrush& brush, float x, float y, float width, float height)
{
    const Gdiplus::Status result =
        Gdiplus::DllExports::GdipFillRectangle(win32::Native(native), win32::Native(brush.GetNative()), x, y, width, height);
    if (result != Gdiplus::Ok)
        status = result;
    return result == Gdiplus::Ok;
}

} // namespace platform
