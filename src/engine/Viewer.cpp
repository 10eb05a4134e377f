#include "engine/Viewer.h"

#include "engine/InputWidget.h"
#include "engine/PositionedWidget.h"
#include "engine/WidgetHost.h"

#include <utility>

namespace {

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

Viewer::Viewer(WidgetHost* host) : Host(host) {}

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

// FIXME: tell the window what the painter redrew once the painter exists;
// until then nothing is ever dirty.
bool Viewer::Flush(bool, bool)
{
    return false;
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
// FIXME: release the mouse capture when the host window holds it, once
// input reaches the widgets.
void Viewer::Clear()
{
    Focus = nullptr;
    WindowWidgets.Release();
    InputWidgets.Release();
    Widgets.ClearFromBack();
    Widgets.Release();
    LayoutPath.Clear();
}
