#pragma once

#include "base/Array.h"
#include "base/RectF.h"
#include "base/WideString.h"
#include "engine/Widget.h"
#include "platform/Bitmap.h"
#include "platform/Paint.h"
#include "platform/Window.h"

#include <memory>

// What painting needs of the root of the widget engine: the widgets in
// drawing order, the backing bitmap and the mapping between the layout's
// logical units and the bitmap's device pixels. Used on the thread of the
// main window only.
class ViewerBase {
public:
    ViewerBase() = default;
    virtual ~ViewerBase() = default;
    ViewerBase(const ViewerBase&) = delete;
    ViewerBase& operator=(const ViewerBase&) = delete;

    // Overrideables
    virtual bool BringToFront(Widget* widget) = 0;
    virtual bool SendToBack(Widget* widget) = 0;
    virtual bool Flush(bool all, bool updateNow) = 0;
    virtual platform::WindowHandle GetHostWindow() = 0;
    virtual Widget* GetLastWidget() = 0;

    // Units
    float GetScale();
    float GetViewWidth();
    float GetViewHeight();
    RectF GetBitmapRect();
    float DeviceFromLogicalX(float logical);
    float DeviceFromLogicalY(float logical);
    float LogicalFromDeviceX(float device);
    float LogicalFromDeviceY(float device);

    // Painting
    // Replaces the backing bitmap by one of width by height device pixels
    // made for context; a negative size only deletes it.
    bool Resize(platform::DeviceContextHandle context, int width, int height);
    bool PaintRect(const RectF& rect);
    bool PaintAll();
    bool Blit(platform::DeviceContextHandle context);
    const RectF& GetDirtyRect() const { return DirtyRect; }
    platform::Bitmap* GetBackingBitmap() const { return Bitmap.get(); }

    std::size_t WidgetCount() const { return Widgets.Count(); }

protected:
    // Drawn and reached: present, visible and in the group on show.
    bool IsShown(const Widget* widget) const;
    static bool IsEmptyRect(const RectF& rect);

    Array<std::unique_ptr<Widget>> Widgets;
    std::unique_ptr<platform::Bitmap> Bitmap;
    RectF DirtyRect;
    WideString CurrentGroup;
    WideString LayoutPath;

public:
    // The view of the layout: logical point at the view's corner, the
    // corner in device pixels, a fixed view size (0 for the bitmap's), the
    // zoom beyond the ratio of resolutions, and the resolution the layout
    // was written for (0 until known).
    float LogicalOriginX = 0;
    float LogicalOriginY = 0;
    float DeviceOriginX = 0;
    float DeviceOriginY = 0;
    float ViewWidth = 0;
    float ViewHeight = 0;
    float Zoom = 1.0f;
    float Dpi = 0;
};

// The scale from logical units to device pixels for a screen of screenDpi
// and a layout of layoutDpi.
float ScaleForResolution(double screenDpi, float layoutDpi, float zoom);
