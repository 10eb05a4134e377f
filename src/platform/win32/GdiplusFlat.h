#pragma once

#include "platform/Bitmap.h"
#include "platform/Font.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "platform/Region.h"
#include "platform/SolidBrush.h"

#include <windows.h>
// GDI+'s headers need COM's types, which the lean Windows header leaves out.
#include <objbase.h>
#include <gdiplus.h>

// Between the platform's opaque GDI+ objects and the flat API's types.
using Gdiplus::GpGraphics;
using Gdiplus::GpImage;
using Gdiplus::GpBitmap;
using Gdiplus::GpBrush;
using Gdiplus::GpSolidFill;
using Gdiplus::GpRegion;
using Gdiplus::GpFontFamily;
using Gdiplus::GpFont;
using Gdiplus::GpStringFormat;
using Gdiplus::GpPen;
using Gdiplus::GpPath;

namespace platform::win32 {

inline GpGraphics* Native(GraphicsObject* graphics) { return reinterpret_cast<GpGraphics*>(graphics); }
inline GraphicsObject* Wrap(GpGraphics* graphics) { return reinterpret_cast<GraphicsObject*>(graphics); }
inline GpImage* Native(ImageObject* image) { return reinterpret_cast<GpImage*>(image); }
inline ImageObject* Wrap(GpImage* image) { return reinterpret_cast<ImageObject*>(image); }
inline GpRegion* Native(RegionObject* region) { return reinterpret_cast<GpRegion*>(region); }
inline RegionObject* Wrap(GpRegion* region) { return reinterpret_cast<RegionObject*>(region); }
inline GpFontFamily* Native(FontFamilyObject* family) { return reinterpret_cast<GpFontFamily*>(family); }
inline FontFamilyObject* Wrap(GpFontFamily* family) { return reinterpret_cast<FontFamilyObject*>(family); }
inline GpFont* Native(FontObject* font) { return reinterpret_cast<GpFont*>(font); }
inline FontObject* Wrap(GpFont* font) { return reinterpret_cast<FontObject*>(font); }
inline GpStringFormat* Native(StringFormatObject* format) { return reinterpret_cast<GpStringFormat*>(format); }
inline StringFormatObject* Wrap(GpStringFormat* format) { return reinterpret_cast<StringFormatObject*>(format); }
inline GpPen* Native(PenObject* pen) { return reinterpret_cast<GpPen*>(pen); }
inline PenObject* Wrap(GpPen* pen) { return reinterpret_cast<PenObject*>(pen); }
inline GpPath* Native(PathObject* path) { return reinterpret_cast<GpPath*>(path); }
inline PathObject* Wrap(GpPath* path) { return reinterpret_cast<PathObject*>(path); }
inline GpBrush* Native(BrushObject* brush) { return reinterpret_cast<GpBrush*>(brush); }
inline BrushObject* Wrap(GpBrush* brush) { return reinterpret_cast<BrushObject*>(brush); }

// Keeps a failing status in a wrapper's status field; true for success.
inline bool Keep(int& status, Gdiplus::Status result)
{
    if (result != Gdiplus::Ok)
        status = result;
    return result == Gdiplus::Ok;
}

// Text of the platform as the flat API takes it.
inline const WCHAR* Text(std::u16string_view text)
{
    return reinterpret_cast<const WCHAR*>(text.data());
}

} // namespace platform::win32
