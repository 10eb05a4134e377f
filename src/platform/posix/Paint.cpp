#include "platform/Paint.h"

#include "platform/posix/StandIn.h"

#include <mutex>

namespace platform {

namespace {

// The context of a live window, the screen's for no window, or null.
DeviceContextHandle ContextOf(WindowHandle window)
{
    static DeviceContextObject screen;
    if (window == nullptr)
        return &screen;
    posix::StandIn& state = posix::State();
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

} // namespace platform
