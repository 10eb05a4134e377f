#include "widgets/EditableText.h"

#include "engine/Viewer.h"
#include "layouttext/AttributeMap.h"
#include "layouttext/ValueSyntax.h"
#include "platform/EditControl.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "widgets/Brush.h"
#include "widgets/Colour.h"

#include <string>

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFFFF;

WideString BoolText(bool flag)
{
    return flag ? u"true" : u"false";
}

} // namespace

// A field starts as drawn text on one line.
EditableText::EditableText(Viewer* owner) : WindowWidget(owner), Display(owner), Box(owner), Edge(owner)
{
    Display.SetNoWrap(true);
    Box.SetVisible(false);
}

// Overrideables

// A text set while editing goes into the control at once and into the
// drawn text only when the editing ends, together with what was typed.
bool EditableText::SetAttribute(const WideString& key, const WideString& value)
{
    if (key == u"Text") {
        bool changed = Box.SetNativeText(value);
        if (!IsEditing() && !(Display.GetCaptionText() == value)) {
            Display.SetCaptionText(value);
            changed = true;
        }
        return changed;
    }
    if (key == u"Color")
        return Display.SetAttribute(key, value);
    if (key == u"HAlign") {
        const bool drawn = Display.SetAttribute(key, value);
        const bool box = Box.SetAlign(ParseAlign(value));
        return drawn || box;
    }
    if (key == u"Font") {
        const bool drawn = Display.SetAttribute(key, value);
        const bool box = Box.SetAttribute(key, value);
        return drawn || box;
    }
    if (key == u"Return")
        return StoreIfChanged(Return, value == u"true");
    if (key == u"SelectAll")
        return StoreIfChanged(SelectAll, value == u"true");
    if (key == u"Enable") {
        if (value == u"false")
            EndEdit();
        return WindowWidget::SetAttribute(key, value);
    }
    // What the Viewer's tab walk sets on the field it leaves and on the one
    // it enters.
    if (key == u"EditVisible") {
        if (value == u"true") {
            BeginEdit();
            Box.SelectRange(0, -1);
        } else {
            EndEdit();
        }
        return false;
    }
    if (key == u"SelectPosition") {
        Box.SetAttribute(key, value);
        return true;
    }
    // One item only; a list of several matches nothing. An option set so
    // adds to the flags and never clears one, unlike an Option of the
    // layout, which stands for all of them.
    if (key == u"Option") {
        const std::uint32_t before = EditFlags;
        if (value == u"Edge")
            EditFlags |= kEdge;
        else if (value == u"SelectAll")
            SelectAll = true;
        else if (value == u"SingleLine")
            Display.SetNoWrap(true);
        else if (value == u"MultiLine")
            Display.SetNoWrap(false);
        return EditFlags != before;
    }
    return WindowWidget::SetAttribute(key, value);
}

// A white background and a sunken edge when the options ask for them, the
// text inside the edge, and the text only while nobody edits: then the
// control lies above the rest. A password shows as one star per unit.
bool EditableText::Draw(platform::Graphics& graphics, const RectF& bounds)
{
    const RectF rect = GetRect();
    if ((EditFlags & kBackColorWhite) != 0) {
        Brush white(Owner);
        white.SetColor(kWhite);
        white.SetBounds(rect);
        white.Draw(graphics, bounds);
    }
    RectF inner = rect;
    if ((EditFlags & kEdge) != 0) {
        Edge.SetBounds(rect);
        Edge.SetTopLeftColor(ButtonShadowColour());
        Edge.SetBottomRightColor(ButtonHighlightColour());
        Edge.Draw(graphics, bounds);
        inner = GetInsetRect(1, 1, -1, -1);
    }
    Display.SetBounds(inner);
    Box.SetBounds(inner);
    if (IsEditing())
        return true;
    if (!Password) {
        Display.Draw(graphics, bounds);
        return true;
    }
    const WideString clear = Display.GetCaptionText();
    Display.SetCaptionText(WideString(std::u16string(clear.Length(), u'*')));
    Display.Draw(graphics, bounds);
    Display.SetCaptionText(clear);
    return true;
}

// Both inner widgets take the whole section, position and Name included.
// The options of the field then decide its flags; "MultiLine" wins over
// "SingleLine", and the box never is a tab stop of its own.
bool EditableText::Load(const AttributeMap& map)
{
    Display.Load(map);
    Box.Load(map);
    Box.SetTabStop(false);
    if (map.Contains(u"Option")) {
        EditFlags = 0;
        if (map.HasItem(u"Option", u"BackColorWhite"))
            EditFlags |= kBackColorWhite;
        if (map.HasItem(u"Option", u"Edge"))
            EditFlags |= kEdge;
        if (map.HasItem(u"Option", u"Number"))
            EditFlags |= kNumber;
        if (map.HasItem(u"Option", u"SingleLine"))
            Display.SetNoWrap(true);
        if (map.HasItem(u"Option", u"MultiLine"))
            Display.SetNoWrap(false);
        Password |= map.HasItem(u"Option", u"Password");
        SelectAll |= map.HasItem(u"Option", u"SelectAll");
    }
    if (map.Contains(u"Round"))
        Edge.Load(map);
    Box.SetVisible(false);
    return WindowWidget::Load(map);
}

bool EditableText::GetAttribute(const WideString& key, WideString& value)
{
    if (key == u"Text") {
        value = Box.GetNativeText();
        return true;
    }
    if (key == u"Editing") {
        value = BoolText(IsEditing());
        return true;
    }
    if (key == u"Return") {
        value = BoolText(Return);
        return true;
    }
    if (key == u"Focus") {
        const platform::WindowHandle focus = platform::GetKeyboardFocus();
        value = BoolText(focus != nullptr && focus == Box.GetNativeWindow());
        return true;
    }
    if (key == u"SelectPosition")
        return Box.GetAttribute(key, value);
    return WindowWidget::GetAttribute(key, value);
}

// Focus loss ends the editing unless an end is under way already; Enter
// ends it on a single line; a click inside begins it and one outside ends
// it. Escape means nothing here.
bool EditableText::OnEvent(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                           std::intptr_t, const PointF& point)
{
    switch (message) {
    case platform::kMessageKillFocus:
        if (!Return && IsControl(window))
            EndEdit();
        return false;
    case platform::kMessageKeyDown:
        if (!Display.IsNoWrap() || !IsControl(window) || wParam != platform::kKeyReturn)
            return false;
        Return = true;
        EndEdit();
        return true;
    case platform::kMessageLeftButtonDown: {
        const RectF view = Owner != nullptr ? Owner->GetViewRect() : RectF{};
        const bool inside = HitTest(point) && point.x >= view.x && point.x < view.x + view.width &&
                            point.y >= view.y && point.y < view.y + view.height;
        if (inside && IsEnabled())
            PressInside();
        else if (!inside && IsEditing())
            EndEdit();
        return false;
    }
    default:
        return false;
    }
}

void EditableText::SyncWindow()
{
    Box.SyncWindow();
}

// Editing

// Lays the control over the field with the drawn text in it, gives it the
// keyboard and makes the field the Viewer's focus. False when the field is
// editing already.
bool EditableText::BeginEdit()
{
    if (IsEditing())
        return false;
    Box.SetVisible(true);
    Box.SetNativeText(Display.GetCaptionText());
    SyncWindow();
    Notify(EventCode::kTakeFocus);
    Repaint();
    return true;
}

// Takes the control's text over and ends the control. A field that checks
// numbers rejects other text: the old text goes back, and that counts as a
// change. A change, or an end by Enter or by the caller's Return, reaches
// the application as a command and an end of editing. False when the field
// wasn't editing.
bool EditableText::EndEdit()
{
    if (!IsEditing())
        return false;
    const WideString old = Display.GetCaptionText();
    bool changed = false;
    if ((EditFlags & kNumber) == 0 || Box.IsNumberText()) {
        const WideString text = Box.GetNativeText();
        changed = !(text == old);
        Display.SetCaptionText(text);
    } else {
        changed = Box.SetNativeText(old);
    }
    if (changed || Return) {
        Notify(EventCode::kCommand);
        Notify(EventCode::kEditFinished);
    }
    Notify(EventCode::kGiveUpFocus);
    Box.SetVisible(false);
    Box.SyncWindow();
    if (Owner != nullptr)
        platform::SetKeyboardFocus(Owner->GetHostWindow());
    // The field was drawn without its text while the control lay over it,
    // so it is painted again even when the text stayed as it was.
    Repaint();
    Return = false;
    return true;
}

bool EditableText::IsControl(platform::WindowHandle window) const
{
    const platform::WindowHandle control = Box.GetNativeWindow();
    return control != nullptr && window == control;
}

// A click also places the caret: the press goes on to the control at the
// cursor, in the control's own pixels. With SelectAll it takes the whole
// text instead.
void EditableText::PressInside()
{
    BeginEdit();
    std::int32_t x = 0;
    std::int32_t y = 0;
    const platform::WindowHandle control = Box.GetNativeWindow();
    if (!platform::GetCursorScreenPosition(x, y) || control == nullptr)
        return;
    if (SelectAll) {
        Box.SelectRange(0, -1);
        return;
    }
    Box.SelectRange(-1, -1);
    platform::ScreenToClientPoint(control, x, y);
    const auto position = static_cast<std::intptr_t>((static_cast<std::uint32_t>(y) & 0xFFFF) << 16 |
                                                     (static_cast<std::uint32_t>(x) & 0xFFFF));
    platform::SendToWindow(control, platform::kMessageLeftButtonDown, platform::kMouseKeyLeftButton, position);
}
