#pragma once

#include "base/Array.h"
#include "engine/ViewerBase.h"

#include <memory>

class InputWidget;
class PositionedWidget;
class WidgetHost;
class WindowWidget;

// The root of the widget engine: it owns the widgets, keeps the lists of
// those that take input and those with a native window, and stands between
// them and its host's window. A member of its host, used on the thread of
// the main window only.
class Viewer : public ViewerBase {
public:
    explicit Viewer(WidgetHost* host);
    ~Viewer() override;

    // Overrideables
    bool BringToFront(Widget* widget) override;
    bool SendToBack(Widget* widget) override;
    bool Flush(bool all, bool updateNow) override;
    platform::WindowHandle GetHostWindow() override;
    Widget* GetLastWidget() override;
    virtual bool AddInputWidget(InputWidget* widget);
    virtual bool RemoveInputWidget(InputWidget* widget);

    // Widget lists
    // Takes ownership and puts the widget on top of all others.
    void AppendWidget(std::unique_ptr<Widget> widget);
    void AddWindowWidget(WindowWidget* widget);
    void RemoveWindowWidget(WindowWidget* widget);
    void Clear();

    InputWidget* GetFocus() const { return Focus; }

protected:
    WidgetHost* const Host;
    Array<InputWidget*> InputWidgets;
    Array<WindowWidget*> WindowWidgets;
    InputWidget* Focus = nullptr;
    bool ActivateOnClick = true;
};
