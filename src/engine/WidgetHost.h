#pragma once

#include "platform/Window.h"

class Viewer;
struct WidgetEvent;

// What the Viewer needs of its owner: the window it shows in, and a place
// for the commands of its widgets.
class WidgetHost {
public:
    virtual ~WidgetHost() = default;

    virtual platform::WindowHandle GetWidgetWindow() = 0;
    virtual bool OnWidgetCommand(Viewer& viewer, const WidgetEvent& event) = 0;
};
