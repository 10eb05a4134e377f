#include "platform/Graphics.h"

#include "platform/Bitmap.h"
#include "platform/win32/GdiplusFlat.h"
#include "platform/win32/WinHandles.h"
#include "platform/win32/WinText.h"

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

using win32::Keep;

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

bool Graphics::SetClipPath(GraphicsPath& path)
{
    return Keep(status, Gdiplus::DllExports::GdipSetClipPath(win32::Native(native), win32::Native(path.GetNative()),
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

bool Graphics::DrawString(std::u16string_view text, Font& font, float x, float y, float width, float height,
                          StringFormat& format, SolidBrush& brush)
{
    const std::u16string terminated = win32::LayoutText(text);
    const Gdiplus::RectF layout(x, y, width, height);
    return Keep(status, Gdiplus::DllExports::GdipDrawString(
                            win32::Native(native), win32::Text(terminated), static_cast<INT>(terminated.size()),
                            win32::Native(font.GetNative()), &layout, win32::Native(format.GetNative()),
                            win32::Native(brush.GetNative())));
}

bool Graphics::DrawPath(Pen& pen, GraphicsPath& path)
{
    return Keep(status, Gdiplus::DllExports::GdipDrawPath(win32::Native(native), win32::Native(pen.GetNative()),
                                                          win32::Native(path.GetNative())));
}

bool Graphics::FillPath(SolidBrush& brush, GraphicsPath& path)
{
    return Keep(status, Gdiplus::DllExports::GdipFillPath(win32::Native(native), win32::Native(brush.GetNative()),
                                                          win32::Native(path.GetNative())));
}

std::int32_t Graphics::GetSmoothingMode()
{
    Gdiplus::SmoothingMode mode = Gdiplus::SmoothingModeDefault;
    Keep(status, Gdiplus::DllExports::GdipGetSmoothingMode(win32::Native(native), &mode));
    return mode;
}

bool Graphics::SetSmoothingMode(std::int32_t mode)
{
    return Keep(status, Gdiplus::DllExports::GdipSetSmoothingMode(win32::Native(native),
                                                                  static_cast<Gdiplus::SmoothingMode>(mode)));
}

std::int32_t Graphics::GetTextRenderingHint()
{
    Gdiplus::TextRenderingHint hint = Gdiplus::TextRenderingHintSystemDefault;
    Keep(status, Gdiplus::DllExports::GdipGetTextRenderingHint(win32::Native(native), &hint));
    return hint;
}

bool Graphics::SetTextRenderingHint(std::int32_t hint)
{
    return Keep(status, Gdiplus::DllExports::GdipSetTextRenderingHint(win32::Native(native),
                                                                      static_cast<Gdiplus::TextRenderingHint>(hint)));
}

} // namespace platform
