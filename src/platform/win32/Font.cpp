#include "platform/Font.h"

#include "platform/win32/GdiplusFlat.h"

#include <string>

namespace platform {

using win32::Keep;

FontFamily::FontFamily(std::u16string_view name)
{
    const std::u16string terminated(name);
    GpFontFamily* family = nullptr;
    status = Gdiplus::DllExports::GdipCreateFontFamilyFromName(win32::Text(terminated), nullptr, &family);
    native = win32::Wrap(family);
}

FontFamily::~FontFamily()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeleteFontFamily(win32::Native(native));
}

std::unique_ptr<FontFamily> FontFamily::GenericSansSerif()
{
    GpFontFamily* family = nullptr;
    if (Gdiplus::DllExports::GdipGetGenericFontFamilySansSerif(&family) != Gdiplus::Ok)
        return nullptr;
    std::unique_ptr<FontFamily> wrapper(new FontFamily);
    wrapper->native = win32::Wrap(family);
    return wrapper;
}

std::uint16_t FontFamily::GetEmHeight(std::int32_t style)
{
    UINT16 height = 0;
    Keep(status, Gdiplus::DllExports::GdipGetEmHeight(win32::Native(native), style, &height));
    return height;
}

std::uint16_t FontFamily::GetLineSpacing(std::int32_t style)
{
    UINT16 spacing = 0;
    Keep(status, Gdiplus::DllExports::GdipGetLineSpacing(win32::Native(native), style, &spacing));
    return spacing;
}

Font::Font(FontFamily& family, float size, std::int32_t style)
{
    GpFont* font = nullptr;
    status = Gdiplus::DllExports::GdipCreateFont(win32::Native(family.GetNative()), size, style, Gdiplus::UnitPoint,
                                                 &font);
    native = win32::Wrap(font);
}

Font::~Font()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeleteFont(win32::Native(native));
}

StringFormat::StringFormat()
{
    GpStringFormat* format = nullptr;
    status = Gdiplus::DllExports::GdipCreateStringFormat(0, LANG_NEUTRAL, &format);
    native = win32::Wrap(format);
}

StringFormat::~StringFormat()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeleteStringFormat(win32::Native(native));
}

bool StringFormat::SetAlignment(std::int32_t alignment)
{
    return Keep(status, Gdiplus::DllExports::GdipSetStringFormatAlign(win32::Native(native),
                                                                      static_cast<Gdiplus::StringAlignment>(alignment)));
}

bool StringFormat::SetLineAlignment(std::int32_t alignment)
{
    return Keep(status, Gdiplus::DllExports::GdipSetStringFormatLineAlign(
                            win32::Native(native), static_cast<Gdiplus::StringAlignment>(alignment)));
}

bool StringFormat::SetFlags(std::int32_t flags)
{
    return Keep(status, Gdiplus::DllExports::GdipSetStringFormatFlags(win32::Native(native), flags));
}

} // namespace platform
