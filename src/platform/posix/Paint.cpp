#include "platform/Paint.h"

#include "platform/posix/StandIn.h"

namespace platform {

// The stand-in has no pixels behind its windows: painting begins and ends
// without a device context.
struct PaintScope::State {};

PaintScope::PaintScope(WindowHandle) : state(new State) {}

PaintScope::~PaintScope() = default;

DeviceContextHandle PaintScope::Context() const
{
    return nullptr;
}

WindowContextScope::WindowContextScope(WindowHandle window) : window(window), context(nullptr) {}

WindowContextScope::~WindowContextScope() = default;

} // namespace platform
