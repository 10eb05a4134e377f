#include "platform/ToolTipControl.h"

#include "base/Utf8.h"
#include "platform/standin/StandIn.h"
#include "platform/ThreadState.h"

#include <string>

// The stand-in's tooltip is a child of its host that holds its tools'
// count, its text and whether it tracks, and draws nothing. What is done to
// a live one goes to the call log, each entry starting with "ToolTip".
namespace platform {

using standin::State;

namespace {

std::intptr_t ToolTipProcedure(WindowHandle, std::uint32_t, std::uintptr_t, std::intptr_t)
{
    return 0;
}

WindowProcedureObject toolTipProcedure{ToolTipProcedure};

// Runs change on the tip's record and logs entry, when tip is a live
// tooltip.
template <typename Change>
void Apply(WindowHandle tip, const std::string& entry, Change change)
{
    {
        std::lock_guard lock(State().mutex);
        if (tip == nullptr || State().windows.count(tip) == 0 || !tip->toolTip.has_value())
            return;
        change(*tip->toolTip);
    }
    standin::RecordCall(entry);
}

} // namespace

WindowHandle CreateToolTipWindow(WindowHandle host)
{
    if (!IsLiveWindow(host))
        return nullptr;
    auto* window = new WindowObject;
    window->owner = CurrentThreadId();
    window->parent = host;
    window->windowProcedure = &toolTipProcedure;
    window->toolTip.emplace();
    {
        std::lock_guard lock(State().mutex);
        State().windows.insert(window);
    }
    standin::RecordCall("ToolTipCreate");
    return window;
}

bool DestroyToolTipWindow(WindowHandle tip)
{
    if (!IsLiveWindow(tip))
        return false;
    standin::RecordCall("ToolTipDestroy");
    standin::DestroyWindowTree(tip);
    return true;
}

void AddToolTipTool(WindowHandle tip, const ToolTipTool& tool)
{
    Apply(tip, "ToolTipAddTool " + std::to_string(tool.flags), [](standin::ToolTip& record) { ++record.tools; });
}

void DeleteToolTipTool(WindowHandle tip, const ToolTipTool&)
{
    Apply(tip, "ToolTipDeleteTool", [](standin::ToolTip& record) { --record.tools; });
}

void UpdateToolTipText(WindowHandle tip, const ToolTipTool&, std::u16string_view text)
{
    Apply(tip, "ToolTipText " + WideToUtf8(text), [text](standin::ToolTip& record) { record.text = text; });
}

void ActivateToolTipTracking(WindowHandle tip, const ToolTipTool&, bool active)
{
    Apply(tip, active ? "ToolTipTrack on" : "ToolTipTrack off",
          [active](standin::ToolTip& record) { record.tracking = active; });
}

void SetToolTipTrackPosition(WindowHandle tip, std::int32_t x, std::int32_t y)
{
    Apply(tip, "ToolTipPosition " + std::to_string(x) + " " + std::to_string(y), [](standin::ToolTip&) {});
}

} // namespace platform
