#pragma once

#include "base/Array.h"
#include "engine/ViewerBase.h"
#include "engine/WidgetEvent.h"

#include <cstdint>
#include <memory>

class AttributeMap;
class InputWidget;
class PositionedWidget;
class Viewer;
class WidgetHost;
class WindowWidget;

// Makes the widget of a section name for a viewer: false for a name that
// builds nothing, true with a null widget when memory ran out.
using WidgetFactoryFunction = bool (*)(const WideString& sectionName, Viewer* viewer,
                                       std::unique_ptr<Widget>& widget);

// The root of the widget engine: it owns the widgets, keeps the lists of
// those that take input and those with a native window, and stands between
// them and its host's window. A member of its host, used on the thread of
// the main window only. The widgets it knows by section name come from its
// factory, which the widget library provides.
class Viewer : public ViewerBase {
public:
    Viewer(WidgetHost* host, WidgetFactoryFunction factory);
    ~Viewer() override;

    // Overrideables
    bool BringToFront(Widget* widget) override;
    bool SendToBack(Widget* widget) override;
    bool Flush(bool all, bool updateNow) override;
    platform::WindowHandle GetHostWindow() override;
    Widget* GetLastWidget() override;
    virtual bool AddInputWidget(InputWidget* widget);
    virtual bool RemoveInputWidget(InputWidget* widget);

    // Input
    bool OnMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam);
    bool PostEvent(const WidgetEvent& event);
    RectF GetViewRect();
    // Takes input: present, enabled, visible and in the group on show.
    bool IsInteractive(const InputWidget* widget) const;

    // Layout
    bool Load(const WideString& path, bool keep);
    bool AddSection(const WideString& name, const AttributeMap& map);
    const WideString& GetCurrentGroup() const { return CurrentGroup; }
    const WideString& GetLayoutPath() const { return LayoutPath; }

    // Access by name
    bool SetWidgetAttribute(const WideString& name, const WideString& key, const WideString& value);
    bool SetWidgetBool(const WideString& name, const WideString& key, bool flag);
    bool GetWidgetAttribute(const WideString& name, const WideString& key, WideString& value);
    bool GetWidgetBool(const WideString& name, const WideString& key, bool& flag);

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

private:
    // Where the cursor of message stands, in device pixels of the host window.
    void FindCursor(std::uint32_t message, std::intptr_t lParam, float& x, float& y);
    // Offers message to the focus first; true when that decided the call,
    // with its result in result.
    bool OfferToFocus(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                      std::intptr_t lParam, const PointF& point, bool& result);
    bool WalkTabStops();

    // Paints the widget's rectangle and flushes it to the screen at once.
    bool RepaintNow(Widget& widget);
    // The first widget of the list with this Name, or null.
    Widget* FindWidget(const WideString& name) const;

    WidgetFactoryFunction factory;
};
