#pragma once

#include "engine/PositionedWidget.h"
#include "engine/WidgetEvent.h"
#include "platform/Window.h"

#include <cstdint>

// A widget that takes input: it stands in the Viewer's input list from its
// construction to its destruction.
class InputWidget : public PositionedWidget {
public:
    explicit InputWidget(Viewer* owner);
    ~InputWidget() override;

    // Overrideables
    // A message of the main window; point is the cursor in logical units.
    // True when the widget took it.
    virtual bool OnEvent(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                         std::intptr_t lParam, const PointF& point);

    // Operations
    // Tells the Viewer, and through it the application, what happened:
    // code under the command name text, or under the widget's Name.
    bool Notify(std::uint32_t code, const WideString& text = {});
    // Paints the widget again and lets the window show it when the message
    // loop comes to it.
    void Repaint();
};

// An input widget with a native child window, which it keeps on its
// rectangle. It stands in the Viewer's window list for its life as well.
class WindowWidget : public InputWidget {
public:
    explicit WindowWidget(Viewer* owner);
    ~WindowWidget() override;

    // Overrideables
    // Puts the child window on the widget's rectangle in device pixels and
    // shows or hides it.
    virtual void SyncWindow() = 0;
};
