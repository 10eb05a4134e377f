#include "widgets/Pushable.h"

#include "engine/ToolTipWindow.h"
#include "engine/Viewer.h"
#include "engine/WidgetEvent.h"
#include "layouttext/AttributeMap.h"
#include "platform/MessageQueue.h"

namespace {

bool Store(bool& field, bool value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}

} // namespace

// The three mouse flags can be set by key. Disabling a widget under the
// mouse lets go of it at once: the flags clear, the capture goes back and
// its tooltip goes, since no leaving will come to take it down.
bool Pushable::SetAttribute(const WideString& key, const WideString& value)
{
    if (key == u"Pushed")
        return Store(Pushed, value == u"true");
    if (key == u"Hover")
        return Store(Hover, value == u"true");
    if (key == u"Clicked")
        return Store(Clicked, value == u"true");
    if (key == u"Enable" && value == u"false" && IsEnabled()) {
        Clicked = false;
        Hover = false;
        Notify(EventCode::kReleaseCapture);
        if (Owner != nullptr)
            ToolTipWindow::Instance().Show(*Owner, WideString(), this);
    }
    return InputWidget::SetAttribute(key, value);
}

// The options Pushed and CheckButton, and the tooltip's text as it stands.
bool Pushable::Load(const AttributeMap& map)
{
    bool changed = false;
    if (map.Contains(u"Option")) {
        changed |= Store(Pushed, map.HasItem(u"Option", u"Pushed"));
        changed |= Store(CheckButton, map.HasItem(u"Option", u"CheckButton"));
    }
    if (map.Contains(u"ToolTip")) {
        const WideString tip = map.GetRaw(u"ToolTip");
        changed |= !(tip == ToolTip);
        ToolTip = tip;
    }
    return InputWidget::Load(map) || changed;
}

bool Pushable::GetAttribute(const WideString& key, WideString& value)
{
    if (key == u"Pushed") {
        value = Pushed ? u"true" : u"false";
        return true;
    }
    if (key == u"Clicked") {
        value = Clicked ? u"true" : u"false";
        return true;
    }
    return InputWidget::GetAttribute(key, value);
}

// The mouse moves in and out, the left button goes down on the widget and
// comes up again. Entering and pressing take the capture, so the widget
// sees the mouse leave; a click counts only when the button comes up
// inside. A double click is a second press. The widget's tooltip shows
// while the mouse is over it.
bool Pushable::OnEvent(platform::WindowHandle, std::uint32_t message, std::uintptr_t, std::intptr_t,
                       const PointF& point)
{
    if (Owner == nullptr || !Owner->IsInteractive(this))
        return false;
    const bool inside = HitTest(point);
    switch (message) {
    case platform::kMessageMouseMove:
        if (inside == Hover)
            return false;
        Hover = inside;
        if (inside) {
            Notify(EventCode::kTakeCapture);
            Notify(EventCode::kMouseEntered);
        } else {
            Notify(EventCode::kReleaseCapture);
            Notify(EventCode::kMouseLeft);
        }
        Repaint();
        ToolTipWindow::Instance().Show(*Owner, inside ? ToolTip : WideString(), this);
        return true;
    case platform::kMessageLeftButtonDown:
    case platform::kMessageLeftButtonDoubleClick:
        if (!inside)
            return false;
        PushedAtPress = Pushed;
        if (!Clicked) {
            Clicked = true;
            Repaint();
        }
        Notify(EventCode::kTakeFocus);
        Notify(EventCode::kTakeCapture);
        return true;
    case platform::kMessageLeftButtonUp:
        if (!Clicked)
            return false;
        if (inside) {
            if (CheckButton)
                Pushed = !PushedAtPress;
            Notify(EventCode::kCommand);
        }
        Clicked = false;
        Repaint();
        Notify(EventCode::kReleaseCapture);
        return true;
    default:
        return false;
    }
}

bool Pushable::HitTest(const PointF& point)
{
    return InputWidget::HitTest(point);
}
