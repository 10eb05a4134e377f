#include "engine/Viewer.h"
#include "engine/ToolTipWindow.h"

#include "engine/CaptureGuard.h"
#include "engine/InputWidget.h"
#include "engine/WidgetHost.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"

#include <cstdint>

namespace {

// True while a guarded event is inside the host. Modal loops of the host,
// a file dialog or a popup menu, go on feeding the window, and a second
// click must not reach the host while the first is still there.
bool inCommand = false;

bool IsPressOrDoubleClick(std::uint32_t message)
{
    switch (message) {
    case platform::kMessageLeftButtonDown:
    case platform::kMessageLeftButtonDoubleClick:
    case platform::kMessageRightButtonDown:
    case platform::kMessageRightButtonDoubleClick:
    case platform::kMessageMiddleButtonDown:
    case platform::kMessageMiddleButtonDoubleClick:
    case platform::kMessageExtraButtonDown:
    case platform::kMessageExtraButtonDoubleClick:
        return true;
    default:
        return false;
    }
}

// The messages whose lParam holds the cursor in client pixels.
bool CarriesCursor(std::uint32_t message)
{
    return message == platform::kMessageMouseMove || message == platform::kMessageLeftButtonDown ||
           message == platform::kMessageLeftButtonUp || message == platform::kMessageLeftButtonDoubleClick ||
           message == platform::kMessageRightButtonDown;
}

} // namespace

// Hands one message of the main window to the widgets: the widget with the
// focus first, then every input widget from the last made to the first,
// until one takes it. Tab walks the tab stops instead. There is no central
// hit test: each widget decides whether the point concerns it. False when
// no widget took the message, and for a hidden window or an unusable scale.
bool Viewer::OnMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam)
{
    const platform::WindowHandle host = GetHostWindow();
    if (!platform::IsWindowShown(host))
        return false;
    if (!(GetScale() > 0))
        return false;
    if (ActivateOnClick && IsPressOrDoubleClick(message))
        platform::ActivateWindow(host);

    float deviceX = 0;
    float deviceY = 0;
    FindCursor(message, lParam, deviceX, deviceY);
    const PointF point{LogicalFromDeviceX(deviceX), LogicalFromDeviceY(deviceY)};

    if (message == platform::kMessageKeyDown && wParam == platform::kKeyTab)
        return WalkTabStops();

    bool result = false;
    if (Focus != nullptr && OfferToFocus(window, message, wParam, lParam, point, result))
        return result;

    for (std::size_t index = InputWidgets.Count(); index-- > 0;) {
        // A widget may take others out of the list while it handles a message.
        if (index >= InputWidgets.Count())
            continue;
        InputWidget* widget = InputWidgets.At(index);
        if (IsInteractive(widget) && widget->OnEvent(window, message, wParam, lParam, point))
            return true;
    }
    return false;
}

// Focus, capture and commands. Capture and focus requests are always let
// through; a command that arrives while another one is inside the host is
// dropped and counted as handled.
bool Viewer::PostEvent(const WidgetEvent& event)
{
    switch (event.Code) {
    case EventCode::kTakeFocus:
        for (InputWidget* widget : InputWidgets) {
            if (widget != nullptr && widget->GetId() == event.Id) {
                Focus = widget;
                if (Host != nullptr)
                    Host->OnWidgetCommand(*this, event);
                return true;
            }
        }
        return false;
    case EventCode::kGiveUpFocus:
        if (Focus != nullptr && Focus->GetId() == event.Id)
            Focus = nullptr;
        return true;
    case EventCode::kTakeCapture:
    case EventCode::kReleaseCapture:
        // The guard does its work as it is built and dropped.
        CaptureGuard(GetHostWindow(), event.Code == EventCode::kTakeCapture, this);
        if (Host != nullptr)
            Host->OnWidgetCommand(*this, event);
        return true;
    default:
        break;
    }
    if (inCommand)
        return true;
    inCommand = true;
    const bool handled = Host != nullptr && Host->OnWidgetCommand(*this, event);
    inCommand = false;
    return handled;
}

// The logical origin and the bitmap's size in pixels, not divided by the
// scale: on a scale above 1 it reaches beyond the view.
RectF Viewer::GetViewRect()
{
    const RectF bitmap = GetBitmapRect();
    return {LogicalOriginX, LogicalOriginY, bitmap.width, bitmap.height};
}

bool Viewer::IsInteractive(const InputWidget* widget) const
{
    return widget != nullptr && widget->IsEnabled() && IsShown(widget);
}

// A mouse message that carries its point also takes down a tooltip that was
// made for another host window.
void Viewer::FindCursor(std::uint32_t message, std::intptr_t lParam, float& x, float& y)
{
    if (CarriesCursor(message)) {
        ToolTipWindow& tip = ToolTipWindow::Instance();
        if (tip.BelongsToOtherHost(GetHostWindow()))
            tip.Destroy();
        x = static_cast<std::int16_t>(lParam & 0xFFFF);
        y = static_cast<std::int16_t>((lParam >> 16) & 0xFFFF);
        return;
    }
    std::int32_t screenX = 0;
    std::int32_t screenY = 0;
    platform::GetCursorScreenPosition(screenX, screenY);
    platform::ScreenToClientPoint(GetHostWindow(), screenX, screenY);
    x = static_cast<float>(screenX);
    y = static_cast<float>(screenY);
}

// Keys, moves, releases and the wheel go to an interactive focus first. So
// do presses inside the view; a press outside it goes to the focus alone
// and counts as not taken, so that the focus can let go of what it holds.
bool Viewer::OfferToFocus(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                          std::intptr_t lParam, const PointF& point, bool& result)
{
    if (!IsInteractive(Focus))
        return false;
    switch (message) {
    case platform::kMessageKeyDown:
    case platform::kMessageKeyUp:
    case platform::kMessageMouseMove:
    case platform::kMessageLeftButtonUp:
    case platform::kMessageMouseWheel:
        result = true;
        return Focus->OnEvent(window, message, wParam, lParam, point);
    case platform::kMessageLeftButtonDown:
    case platform::kMessageLeftButtonDoubleClick:
    case platform::kMessageRightButtonDown: {
        const RectF view = GetViewRect();
        const bool inside = point.x >= view.x && point.x < view.x + view.width && point.y >= view.y &&
                            point.y < view.y + view.height;
        if (inside) {
            result = true;
            return Focus->OnEvent(window, message, wParam, lParam, point);
        }
        Focus->OnEvent(window, message, wParam, lParam, point);
        result = false;
        return true;
    }
    default:
        return false;
    }
}

// Moves the focus to the next tab stop, or the one before with Shift, and
// wraps around. Leaving and entering go through the key "EditVisible",
// which only text fields know: entering one opens its edit control and
// makes it the focus. The target is found again by its Name, so a stop
// needs a name of its own. Stops are visited whatever their state.
bool Viewer::WalkTabStops()
{
    const bool backwards = platform::IsShiftKeyDown();
    const std::size_t count = InputWidgets.Count();
    auto stopAt = [&](std::size_t step) -> InputWidget* {
        InputWidget* widget = InputWidgets.At(backwards ? count - 1 - step : step);
        return widget != nullptr && widget->IsTabStop() ? widget : nullptr;
    };

    bool anyStop = false;
    for (std::size_t step = 0; step < count; ++step)
        anyStop |= stopAt(step) != nullptr;
    if (!anyStop)
        return false;

    InputWidget* target = nullptr;
    bool passed = false;
    for (int round = 0; round < 2 && target == nullptr; ++round) {
        for (std::size_t step = 0; step < count && target == nullptr; ++step) {
            InputWidget* stop = stopAt(step);
            if (stop == nullptr)
                continue;
            if (Focus == nullptr && round == 0) {
                SetWidgetBool(stop->GetName(), u"EditVisible", true);
                return true;
            }
            if (stop == Focus && round == 0)
                passed = true;
            else if (passed)
                target = stop;
        }
    }
    if (target == nullptr)
        return true;
    Focus->SetBoolAttribute(u"EditVisible", false);
    SetWidgetBool(target->GetName(), u"EditVisible", true);
    return true;
}
