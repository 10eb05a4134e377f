#include "platform/Paint.h"

#include "platform/standin/StandIn.h"

#include <mutex>
#include <string>

namespace platform {

namespace {

// The context of a live window, the screen's for no window, or null.
DeviceContextHandle ContextOf(WindowHandle window)
{
    static DeviceContextObject screen;
    if (window == nullptr)
        return &screen;
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    return state.windows.count(window) != 0 ? &window->deviceContext : nullptr;
}

} // namespace

// Painting in the stand-in validates nothing: the window's context is lent
// for the length of the scope.
struct PaintScope::State {
    DeviceContextHandle context = nullptr;
};

PaintScope::PaintScope(WindowHandle window) : state(new State{ContextOf(window)}) {}

PaintScope::~PaintScope() = default;

DeviceContextHandle PaintScope::Context() const
{
    return state->context;
}

WindowContextScope::WindowContextScope(WindowHandle window) : window(window), context(ContextOf(window)) {}

WindowContextScope::~WindowContextScope() = default;

// The stand-in paints nothing: invalidations and updates of live windows
// go to the call record, where tests see them.
bool InvalidateWindowRect(WindowHandle window, const PixelRect* rect)
{
    if (!IsLiveWindow(window))
        return false;
    if (rect == nullptr)
        standin::RecordCall("InvalidateWindowRect all");
    else
        standin::RecordCall("InvalidateWindowRect " + std::to_string(rect->left) + "," + std::to_string(rect->top) +
                          "," + std::to_string(rect->right) + "," + std::to_string(rect->bottom));
    return true;
}

bool UpdateWindowNow(WindowHandle window)
{
    if (!IsLiveWindow(window))
        return false;
    standin::RecordCall("UpdateWindowNow");
    return true;
}

// A window's context may draw on its whole client area, the screen's on
// the work area.
bool GetContextClipBox(DeviceContextHandle context, PixelRect& box)
{
    if (context == nullptr)
        return false;
    if (context->window == nullptr) {
        box = GetNearestWorkArea(nullptr);
        return true;
    }
    const PixelRect client = GetClientBounds(context->window);
    box = {0, 0, client.Width(), client.Height()};
    return true;
}

} // namespace platform
