#include "platform/Window.h"

#include "platform/MessageQueue.h"
#include "platform/ProgramResources.h"
#include "platform/standin/StandIn.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace platform {

using standin::State;

namespace {

// The dialog templates of the program's resources, from the facts that the
// Windows build compiles them from, with their size in dialog units.
struct DialogTemplate {
    int id;
    const char16_t* caption;
    std::int32_t width;
    std::int32_t height;
};

constexpr DialogTemplate kTemplates[] = {
    {SONDARA_MAIN_DIALOG_ID, u"" SONDARA_MAIN_DIALOG_CAPTION, SONDARA_MAIN_DIALOG_WIDTH, SONDARA_MAIN_DIALOG_HEIGHT},
};

// Dialog units of "MS Shell Dlg" at 8 points and 96 dots per inch: a
// quarter of an average character's width of 6 pixels, an eighth of its
// height of 13.
constexpr std::int32_t kBaseUnitX = 6;
constexpr std::int32_t kBaseUnitY = 13;

// Rounds like the system's MulDiv, halves away from zero.
std::int32_t UnitsToPixels(std::int32_t units, std::int32_t base, std::int32_t divisor)
{
    std::int64_t product = static_cast<std::int64_t>(units) * base;
    return static_cast<std::int32_t>((2 * product + divisor) / (2 * divisor));
}

bool IsLiveLocked(WindowHandle window)
{
    return window == standin::Desktop() || State().windows.count(window) != 0;
}

// A dialog's client area lies inside its frame and below its caption; a
// child has no frame, and lies where it is placed in its parent's.
PixelRect ClientBoundsLocked(WindowHandle window)
{
    const PixelRect bounds = window->bounds;
    if (window->parent == nullptr)
        return {bounds.left + standin::kFrameSide, bounds.top + standin::kFrameCaption,
                bounds.right - standin::kFrameSide, bounds.bottom - standin::kFrameSide};
    const PixelRect parent = ClientBoundsLocked(window->parent);
    return {parent.left + bounds.left, parent.top + bounds.top, parent.left + bounds.right,
            parent.top + bounds.bottom};
}

} // namespace

WindowHandle CreateDialogWindow(InstanceHandle, int templateId, DialogProcedure procedure)
{
    standin::StandIn& state = State();
    standin::RecordCall("CreateDialogWindow " + std::to_string(templateId));
    const DialogTemplate* found = nullptr;
    for (const DialogTemplate& candidate : kTemplates)
        if (candidate.id == templateId)
            found = &candidate;
    WindowHandle window = nullptr;
    {
        std::lock_guard lock(state.mutex);
        if (state.failingDialogCreations > 0) {
            --state.failingDialogCreations;
            return nullptr;
        }
        if (found == nullptr)
            return nullptr;
        window = new WindowObject;
        window->owner = CurrentThreadId();
        window->procedure = procedure;
        window->templateId = templateId;
        window->caption = found->caption;
        std::int32_t width = UnitsToPixels(found->width, kBaseUnitX, 4) + 2 * standin::kFrameSide;
        std::int32_t height = UnitsToPixels(found->height, kBaseUnitY, 8) + standin::kFrameCaption + standin::kFrameSide;
        window->bounds = {0, 0, width, height};
        state.windows.insert(window);
    }
    // The same two messages as on Windows reach the procedure before the
    // call returns: the font first, then the initialisation.
    standin::CallProcedure(window, kMessageSetFont, 0, 1);
    standin::CallProcedure(window, kMessageInitDialog, 0, 0);
    return IsLiveWindow(window) ? window : nullptr;
}

void SetDialogProcedure(WindowHandle window, DialogProcedure procedure)
{
    std::lock_guard lock(State().mutex);
    if (IsLiveLocked(window))
        window->procedure = procedure;
}

bool DestroyDialogWindow(WindowHandle window)
{
    if (!IsLiveWindow(window))
        return false;
    standin::RecordCall("DestroyDialogWindow");
    standin::DestroyWindowTree(window);
    return true;
}

bool IsLiveWindow(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return IsLiveLocked(window);
}

void SetWindowContext(WindowHandle window, void* context)
{
    std::lock_guard lock(State().mutex);
    if (IsLiveLocked(window))
        window->context = context;
}

void* GetWindowContext(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return IsLiveLocked(window) ? window->context : nullptr;
}

bool ShowWindowAs(WindowHandle window, int showCommand)
{
    standin::RecordCall("ShowWindowAs " + std::to_string(showCommand));
    std::lock_guard lock(State().mutex);
    if (!IsLiveLocked(window))
        return false;
    bool wasShown = window->shown;
    window->shown = showCommand != kShowHide;
    window->lastShowCommand = showCommand;
    return wasShown;
}

bool IsWindowShown(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return IsLiveLocked(window) && window->shown;
}

PixelRect GetWindowBounds(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return IsLiveLocked(window) ? window->bounds : PixelRect{};
}

PixelRect GetClientBounds(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return IsLiveLocked(window) ? ClientBoundsLocked(window) : PixelRect{};
}

PixelRect GetNearestWorkArea(WindowHandle)
{
    std::lock_guard lock(State().mutex);
    return State().workArea;
}

bool SetWindowPosition(WindowHandle window, std::int32_t x, std::int32_t y, std::int32_t width,
                       std::int32_t height, std::uint32_t flags)
{
    std::lock_guard lock(State().mutex);
    if (!IsLiveLocked(window))
        return false;
    PixelRect& bounds = window->bounds;
    if ((flags & kPositionNoSize) == 0) {
        bounds.right = bounds.left + width;
        bounds.bottom = bounds.top + height;
    }
    if ((flags & kPositionNoMove) == 0)
        bounds = {x, y, x + bounds.Width(), y + bounds.Height()};
    return true;
}

bool StartTimer(WindowHandle window, std::uintptr_t timerId, std::uint32_t periodMs)
{
    standin::StandIn& state = State();
    std::lock_guard lock(state.mutex);
    if (!IsLiveLocked(window))
        return false;
    std::erase_if(state.timers,
                  [&](const standin::Timer& timer) { return timer.window == window && timer.id == timerId; });
    // The system raises periods below 10 ms to 10 ms; a period of 0 would
    // also stop the clock from moving.
    std::uint32_t period = std::max<std::uint32_t>(periodMs, 10);
    state.timers.push_back({window, timerId, period, state.now + period});
    return true;
}

void AcceptDroppedFiles(WindowHandle window, bool accept)
{
    std::lock_guard lock(State().mutex);
    if (IsLiveLocked(window))
        window->acceptsDrops = accept;
}

WindowHandle standin::Desktop()
{
    static WindowObject desktop;
    return &desktop;
}

WindowHandle GetDesktop()
{
    return standin::Desktop();
}

bool IsWindowInputEnabled(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return IsLiveLocked(window) && window->inputEnabled;
}

// Records "EnableWindowInput 0" or "... 1"; the result is whether the
// window was disabled before, as the system's is.
bool EnableWindowInput(WindowHandle window, bool enable)
{
    bool wasDisabled = false;
    {
        std::lock_guard lock(State().mutex);
        if (!IsLiveLocked(window))
            return false;
        wasDisabled = !window->inputEnabled;
        window->inputEnabled = enable;
    }
    standin::RecordCall(std::string("EnableWindowInput ") + (enable ? "1" : "0"));
    return wasDisabled;
}

} // namespace platform
