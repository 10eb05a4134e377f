#include "engine/Viewer.h"

#include "engine/InputWidget.h"
#include "engine/PositionedWidget.h"
#include "engine/WidgetHost.h"
#include "files/PathParts.h"
#include "layouttext/AttributeMap.h"
#include "layouttext/LayoutDocument.h"
#include "layouttext/ValueSyntax.h"
#include "platform/FileSystem.h"
#include "platform/Input.h"
#include "platform/Paint.h"
#include "platform/Window.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <utility>

namespace {

// Device pixels of an edge: truncated toward zero, or rounded up, within
// the range of a pixel coordinate; what is no number at all is 0.
std::int32_t ToPixel(double value)
{
    if (std::isnan(value))
        return 0;
    return static_cast<std::int32_t>(std::clamp(value, -2147483648.0, 2147483647.0));
}

std::int32_t TruncatedPixel(float value)
{
    return ToPixel(std::trunc(static_cast<double>(value)));
}

std::int32_t CeilingPixel(float value)
{
    return ToPixel(std::ceil(static_cast<double>(value)));
}

// The one widget that stands for "no widget before this one": it has no
// owner and no position texts, so all its edges are 0.
PositionedWidget& EmptyWidget()
{
    static PositionedWidget empty(nullptr);
    return empty;
}

std::size_t IndexOfWidget(const Array<std::unique_ptr<Widget>>& widgets, const Widget* widget)
{
    std::size_t index = 0;
    while (index < widgets.Count() && widgets.At(index).get() != widget)
        ++index;
    return index;
}

// Moves the entry at index to the end, or to the front.
template <typename T>
void MoveToEnd(Array<T>& list, std::size_t index)
{
    if (index < list.Count())
        list.Add(list.RemoveAt(index));
}

template <typename T>
void MoveToFront(Array<T>& list, std::size_t index)
{
    if (index < list.Count())
        list.Insert(0, list.RemoveAt(index));
}

} // namespace

Viewer::Viewer(WidgetHost* host, WidgetFactoryFunction factory) : Host(host), factory(factory) {}

Viewer::~Viewer()
{
    Clear();
}

// Overrideables

// Puts widget on top of every list it stands in; a widget that takes input
// gets the focus as well.
bool Viewer::BringToFront(Widget* widget)
{
    if (widget == nullptr)
        return false;
    MoveToEnd(InputWidgets, InputWidgets.IndexOf(widget));
    MoveToEnd(WindowWidgets, WindowWidgets.IndexOf(widget));
    MoveToEnd(Widgets, IndexOfWidget(Widgets, widget));
    const std::size_t input = InputWidgets.IndexOf(widget);
    if (input < InputWidgets.Count())
        Focus = InputWidgets.At(input);
    return true;
}

bool Viewer::SendToBack(Widget* widget)
{
    if (widget == nullptr)
        return false;
    MoveToFront(InputWidgets, InputWidgets.IndexOf(widget));
    MoveToFront(WindowWidgets, WindowWidgets.IndexOf(widget));
    MoveToFront(Widgets, IndexOfWidget(Widgets, widget));
    if (Focus == widget)
        Focus = nullptr;
    return true;
}

// Tells the window what the painter redrew since the last flush, cut to
// the view, and puts the native child windows that the redrawn area
// touches back on top of their widgets. With all, the whole window is
// repainted at once and every child window is placed. False when there is
// no window, or, without all, nothing to tell.
bool Viewer::Flush(bool all, bool updateNow)
{
    const platform::WindowHandle window = GetHostWindow();
    if (!platform::IsLiveWindow(window))
        return false;
    if (all) {
        platform::InvalidateWindowRect(window, nullptr);
        platform::UpdateWindowNow(window);
        DirtyRect = {};
        for (WindowWidget* widget : WindowWidgets) {
            if (widget != nullptr)
                widget->SyncWindow();
        }
        return true;
    }
    if (IsEmptyRect(DirtyRect))
        return false;

    const RectF bitmap = GetBitmapRect();
    const platform::PixelRect view{TruncatedPixel(DeviceOriginX), TruncatedPixel(DeviceOriginY),
                                   CeilingPixel(bitmap.width + DeviceOriginX),
                                   CeilingPixel(bitmap.height + DeviceOriginY)};
    const platform::PixelRect dirty{TruncatedPixel(DeviceFromLogicalX(DirtyRect.x)),
                                    TruncatedPixel(DeviceFromLogicalY(DirtyRect.y)),
                                    CeilingPixel(DeviceFromLogicalX(DirtyRect.x + DirtyRect.width)),
                                    CeilingPixel(DeviceFromLogicalY(DirtyRect.y + DirtyRect.height))};
    platform::PixelRect invalid;
    IntersectPixelRects(invalid, view, dirty);
    platform::InvalidateWindowRect(window, &invalid);
    if (updateNow)
        platform::UpdateWindowNow(window);

    // A child window that only touches the redrawn area keeps its place.
    for (WindowWidget* widget : WindowWidgets) {
        if (widget == nullptr)
            continue;
        const RectF r = widget->GetRect();
        if (r.x < DirtyRect.x + DirtyRect.width && r.x + r.width > DirtyRect.x &&
            r.y < DirtyRect.y + DirtyRect.height && r.y + r.height > DirtyRect.y)
            widget->SyncWindow();
    }
    DirtyRect = {};
    return true;
}

platform::WindowHandle Viewer::GetHostWindow()
{
    return Host != nullptr ? Host->GetWidgetWindow() : nullptr;
}

// The widget appended last, which a widget being loaded places itself
// after; the shared empty widget when there is none.
Widget* Viewer::GetLastWidget()
{
    if (Widgets.IsEmpty())
        return &EmptyWidget();
    return Widgets.At(Widgets.Count() - 1).get();
}

bool Viewer::AddInputWidget(InputWidget* widget)
{
    if (widget == nullptr)
        return false;
    InputWidgets.Add(widget);
    return true;
}

bool Viewer::RemoveInputWidget(InputWidget* widget)
{
    if (Focus == widget)
        Focus = nullptr;
    const std::size_t index = InputWidgets.IndexOf(widget);
    if (index < InputWidgets.Count())
        InputWidgets.RemoveAt(index);
    return true;
}

// Layout

// Reads a layout file and adds a widget for each section that makes one,
// on top of the widgets there unless keep is false. A path without a drive
// is sought in the current directory by its name alone, and a layout that
// isn't found is sought once more in the folder above. The folder of the
// path becomes the current directory whatever comes of the load. False
// when the file can't be read; nothing was added then.
bool Viewer::Load(const WideString& givenPath, bool keep)
{
    if (!keep)
        Clear();
    WideString path = givenPath;
    if (!platform::HasDrive(path.View()))
        path = AddTrailingBackslash(GetCurrentDir()) + PathParts(path).GetNameExt();
    const std::uint32_t attributes = platform::GetPathAttributes(path.View());
    if (attributes == platform::kInvalidFileAttributes || (attributes & platform::kFileAttributeDirectory) != 0) {
        const PathParts parts(path);
        path = GetParentDir(parts.GetDriveDir()) + parts.GetNameExt();
    }
    platform::ChangeCurrentDirectory(PathParts(path).GetDriveDir().View());

    LayoutDocument document;
    if (!document.Load(path))
        return false;
    for (std::int32_t index = 0; index < document.GetSectionCount(); ++index)
        AddSection(document.GetSectionName(index), document.GetSectionMap(index));
    LayoutPath = path;
    return true;
}

// Makes the widget of one section, loads it and puts it on top. While it
// loads it isn't in the list yet, so its relative positions see the widget
// before it. A section named "Viewer" sets the group on show and the
// layout's resolution; the last such section wins. True only when a widget
// was added.
bool Viewer::AddSection(const WideString& name, const AttributeMap& map)
{
    std::unique_ptr<Widget> widget;
    if (factory != nullptr && factory(name, this, widget) && widget != nullptr) {
        widget->Load(map);
        Widgets.Add(std::move(widget));
        return true;
    }
    if (name == u"Viewer") {
        if (map.Contains(u"Group"))
            CurrentGroup = map.GetValue(u"Group", {}, false);
        if (map.Contains(u"Dpi"))
            Dpi = ScanFloat(map.GetRaw(u"Dpi").View());
    }
    return false;
}

// Access by name

// Changes one attribute of the first widget with this Name and, when
// something changed, repaints the widget where it now stands and brings the
// screen up to date before returning. False when no widget has the name or
// nothing changed; nothing is painted then.
bool Viewer::SetWidgetAttribute(const WideString& name, const WideString& key, const WideString& value)
{
    Widget* widget = FindWidget(name);
    if (widget == nullptr || !widget->SetAttribute(key, value))
        return false;
    return RepaintNow(*widget);
}

bool Viewer::SetWidgetBool(const WideString& name, const WideString& key, bool flag)
{
    Widget* widget = FindWidget(name);
    if (widget == nullptr || !widget->SetBoolAttribute(key, flag))
        return false;
    return RepaintNow(*widget);
}

// False, with value untouched, when no widget has the name.
bool Viewer::GetWidgetAttribute(const WideString& name, const WideString& key, WideString& value)
{
    Widget* widget = FindWidget(name);
    return widget != nullptr && widget->GetAttribute(key, value);
}

// flag is true only for the text "true"; a key the widget doesn't know
// gives false and a false flag.
bool Viewer::GetWidgetBool(const WideString& name, const WideString& key, bool& flag)
{
    Widget* widget = FindWidget(name);
    if (widget == nullptr)
        return false;
    WideString value;
    const bool known = widget->GetAttribute(key, value);
    flag = value == u"true";
    return known;
}

bool Viewer::RepaintNow(Widget& widget)
{
    const bool painted = PaintRect(widget.GetRect());
    const bool flushed = Flush(false, true);
    return painted || flushed;
}

Widget* Viewer::FindWidget(const WideString& name) const
{
    for (const std::unique_ptr<Widget>& widget : Widgets) {
        if (widget != nullptr && widget->GetName() == name)
            return widget.get();
    }
    return nullptr;
}

// Widget lists

void Viewer::AppendWidget(std::unique_ptr<Widget> widget)
{
    Widgets.Add(std::move(widget));
}

void Viewer::AddWindowWidget(WindowWidget* widget)
{
    if (widget != nullptr)
        WindowWidgets.Add(widget);
}

void Viewer::RemoveWindowWidget(WindowWidget* widget)
{
    for (std::size_t index = WindowWidgets.IndexOf(widget); index < WindowWidgets.Count();
         index = WindowWidgets.IndexOf(widget))
        WindowWidgets.RemoveAt(index);
}

// Deletes every widget. The lists of borrowed pointers are emptied first,
// so the widgets' destructors find nothing left to take out. The group on
// show, the resolution, the bitmap and the dirty area stay.
void Viewer::Clear()
{
    const platform::WindowHandle window = GetHostWindow();
    if (window != nullptr && platform::GetCaptureWindow() == window)
        platform::ReleaseMouseCapture();
    Focus = nullptr;
    WindowWidgets.Release();
    InputWidgets.Release();
    Widgets.ClearFromBack();
    Widgets.Release();
    LayoutPath.Clear();
}
