#include "engine/ToolTipWindow.h"

#include "engine/PositionedWidget.h"
#include "engine/ViewerBase.h"
#include "platform/Input.h"

namespace {

// Between the widget's lower edge and the tip, in device pixels.
constexpr float kGapBelowWidget = 8;

// Made before the program's main function and left after it. It is never
// destroyed by hand at the end: the native tip belongs to its host window
// and goes with it.
ToolTipWindow instance;

} // namespace

ToolTipWindow& ToolTipWindow::Instance()
{
    return instance;
}

// A widget that doesn't own the tip can't take it down, so a tip survives
// the mouse leaving one button for the next one in whichever order the two
// hear of it.
bool ToolTipWindow::Show(ViewerBase& viewer, const WideString& text, PositionedWidget* widget)
{
    if (widget == nullptr)
        return false;
    if (text.IsEmpty()) {
        if (Target == widget) {
            SetText(text);
            Target = nullptr;
        }
        return true;
    }
    const platform::WindowHandle host = viewer.GetHostWindow();
    if (TipWindow != nullptr && OwnerWindow != host)
        Destroy();
    if (Target == widget && Text == text)
        return true;
    if (TipWindow == nullptr) {
        TipWindow = platform::CreateToolTipWindow(host);
        if (TipWindow != nullptr) {
            ToolInfo.window = host;
            platform::AddToolTipTool(TipWindow, ToolInfo);
        }
        OwnerWindow = host;
    }
    const float scale = viewer.GetScale();
    auto x = static_cast<std::int32_t>((widget->Left() - viewer.LogicalOriginX) * scale + viewer.DeviceOriginX);
    auto y = static_cast<std::int32_t>((widget->Bottom() - viewer.LogicalOriginY) * scale + viewer.DeviceOriginY +
                                       kGapBelowWidget);
    platform::ClientToScreenPoint(host, x, y);
    if (TipWindow != nullptr)
        platform::SetToolTipTrackPosition(TipWindow, x, y);
    SetText(text);
    Target = widget;
    return true;
}

bool ToolTipWindow::SetText(const WideString& text)
{
    if (text == Text)
        return false;
    Text = text;
    if (TipWindow == nullptr)
        return true;
    if (!text.IsEmpty()) {
        platform::UpdateToolTipText(TipWindow, ToolInfo, text.View());
        platform::ActivateToolTipTracking(TipWindow, ToolInfo, true);
    } else {
        platform::ActivateToolTipTracking(TipWindow, ToolInfo, false);
    }
    return true;
}

// The text goes with the window, so that the next Show puts it on the new
// one even when it is the same.
void ToolTipWindow::Destroy()
{
    if (TipWindow != nullptr) {
        platform::DeleteToolTipTool(TipWindow, ToolInfo);
        platform::DestroyToolTipWindow(TipWindow);
    }
    TipWindow = nullptr;
    OwnerWindow = nullptr;
    Target = nullptr;
    Text = WideString();
}

bool ToolTipWindow::BelongsToOtherHost(platform::WindowHandle host) const
{
    return TipWindow != nullptr && OwnerWindow != host;
}
