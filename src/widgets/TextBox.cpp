#include "widgets/TextBox.h"

#include "engine/Viewer.h"
#include "layouttext/AttributeMap.h"
#include "layouttext/ValueSyntax.h"
#include "platform/EditControl.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "widgets/EditSubclass.h"
#include "widgets/FontHandle.h"
#include "widgets/IconFont.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cwctype>

namespace {

constexpr std::int32_t kAlignCentre = 1;
constexpr std::int32_t kAlignRight = 2;
constexpr float kDefaultFontSize = 10.0f;
constexpr std::int32_t kDefaultFontTenths = 100;
constexpr std::uintptr_t kRedraw = 1;

// A number truncated toward zero and held to the range of a 32-bit
// integer; what is no number at all is 0.
std::int32_t Truncated(double value)
{
    if (std::isnan(value))
        return 0;
    return static_cast<std::int32_t>(std::clamp(std::trunc(value), -2147483648.0, 2147483647.0));
}

// A size in points as the control's font takes it.
std::int32_t TenthsOf(float points)
{
    return Truncated(static_cast<double>(points) * 10);
}

} // namespace

TextBox::TextBox(Viewer* owner) : WindowWidget(owner) {}

TextBox::~TextBox()
{
    DestroyNativeWindow(true);
    Font.reset();
    Subclass.reset();
}

// Overrideables

bool TextBox::SetAttribute(const WideString& key, const WideString& value)
{
    if (key == u"Text")
        return SetNativeText(value);
    if (key == u"Font") {
        WideString face;
        if (!GetCsvItem(value, 1, face))
            face = GetIconFontName();
        return SetNativeFont(TenthsOf(GetCsvFloat(value, kDefaultFontSize)), face);
    }
    // A value without a comma selects nothing; a side that doesn't scan
    // reads as 0.
    if (key == u"SelectPosition") {
        const std::size_t comma = value.Find(u',');
        if (comma != WideString::npos)
            SelectRange(ScanDecimalInt(value.View().substr(0, comma)), ScanDecimalInt(value.View().substr(comma + 1)));
        return true;
    }
    return WindowWidget::SetAttribute(key, value);
}

// The control paints itself.
bool TextBox::Draw(platform::Graphics&, const RectF&)
{
    return true;
}

// The text is taken as it stands, escapes and all. The flags are read when
// a control is made; an option that is missing doesn't clear one.
bool TextBox::Load(const AttributeMap& map)
{
    if (map.Contains(u"Text"))
        SetNativeText(map.GetRaw(u"Text"));
    if (map.Contains(u"Font")) {
        WideString face;
        if (!map.GetItem(u"Font", 1, face))
            face = GetIconFontName();
        SetNativeFont(TenthsOf(map.GetFloatItem(u"Font", 0, kDefaultFontSize)), face);
    }
    if (map.Contains(u"Align"))
        Align = ParseAlign(map.GetItemOr(u"Align", 0, u"L"));
    if (map.Contains(u"Option")) {
        MultiLine |= map.HasItem(u"Option", u"MultiLine");
        VScroll |= map.HasItem(u"Option", u"VScroll");
        ScrollLast |= map.HasItem(u"Option", u"ScrollLast");
        ReadOnly |= map.HasItem(u"Option", u"ReadOnly");
        Password |= map.HasItem(u"Option", u"Password");
    }
    return WindowWidget::Load(map);
}

// Only Text and SelectPosition; the common keys are the owner's to answer.
// Without a control the selection reads as 0,0.
bool TextBox::GetAttribute(const WideString& key, WideString& value)
{
    if (key == u"Text") {
        value = GetNativeText();
        return true;
    }
    if (key == u"SelectPosition") {
        const platform::WindowHandle window = GetNativeWindow();
        const auto selection = static_cast<std::uint32_t>(
            window != nullptr ? platform::SendToWindow(window, platform::kMessageEditGetSelection, 0, 0) : 0);
        char text[32];
        std::snprintf(text, sizeof text, "%d,%d", static_cast<int>(selection & 0xFFFF),
                      static_cast<int>(selection >> 16 & 0xFFFF));
        value = WideString::FromAscii(text);
        return true;
    }
    return false;
}

// The control's end saves its text; Ctrl+A selects all of it, whichever
// window of the thread the key came to; and each change of its text
// reaches the application as a command under the widget's Name, typing
// and text set by the program alike.
bool TextBox::OnEvent(platform::WindowHandle, std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                      const PointF&)
{
    switch (message) {
    case platform::kMessageDestroy:
        DestroyNativeWindow(false);
        return false;
    case platform::kMessageKeyDown:
        if (wParam != u'A' || !platform::IsControlKeyDown())
            return false;
        SelectRange(0, -1);
        return true;
    case platform::kMessageCommand:
        if (Window == nullptr || lParam != reinterpret_cast<std::intptr_t>(Window))
            return false;
        if ((wParam >> 16 & 0xFFFF) == platform::kEditNotifyUpdate)
            Notify(EventCode::kCommand);
        return true;
    default:
        return false;
    }
}

// A visible box in the group on show has a control on its rectangle, in
// whole device pixels; any other has none. A control that already lies
// there isn't touched.
void TextBox::SyncWindow()
{
    if (!Visible || Owner == nullptr || !IsInGroup(Owner->GetCurrentGroup())) {
        DestroyNativeWindow(true);
        return;
    }
    CreateNativeWindow();
    const platform::WindowHandle window = GetNativeWindow();
    if (window == nullptr)
        return;
    const platform::PixelRect wanted{Truncated(Owner->DeviceFromLogicalX(Left())),
                                     Truncated(Owner->DeviceFromLogicalY(Top())),
                                     Truncated(Owner->DeviceFromLogicalX(Right())),
                                     Truncated(Owner->DeviceFromLogicalY(Bottom()))};
    const platform::PixelRect now = platform::GetChildBounds(window);
    if (now.left != wanted.left || now.top != wanted.top || now.right != wanted.right || now.bottom != wanted.bottom)
        platform::PlaceChildWindow(window, wanted.left, wanted.top, wanted.Width(), wanted.Height());
}

// The native control

// Makes the control when there is none, hooks it, gives it the focus and
// the kept text, and makes sure it has a font: 10 points of the icon font
// when none was set. A control that couldn't be made leaves the box
// without one; the kept text stands in for it.
bool TextBox::CreateNativeWindow()
{
    if (GetNativeWindow() == nullptr) {
        Window = platform::CreateEditControl(Owner != nullptr ? Owner->GetHostWindow() : nullptr, NativeStyle());
        Subclass.reset();
        Subclass = std::make_unique<EditSubclass>(this);
        if (Window != nullptr) {
            Subclass->SubclassWindow(Window);
            platform::SetKeyboardFocus(Window);
        }
        SetNativeText(KeptText);
    }
    if (Font == nullptr)
        SetNativeFont(kDefaultFontTenths, GetIconFontName());
    else if (GetNativeWindow() != nullptr)
        platform::SendToWindow(Window, platform::kMessageSetFont, reinterpret_cast<std::uintptr_t>(Font->Get()),
                               kRedraw);
    return true;
}

// Gives the keyboard back to the host window, takes the hook off and keeps
// the control's text; with destroyWindow the control goes as well. False,
// and nothing done, when there is no control.
bool TextBox::DestroyNativeWindow(bool destroyWindow)
{
    if (GetNativeWindow() == nullptr)
        return false;
    platform::SetKeyboardFocus(Owner != nullptr ? Owner->GetHostWindow() : nullptr);
    // Losing the focus may have ended the control already: each step asks
    // again whether it is alive.
    if (Subclass != nullptr && platform::IsLiveWindow(Subclass->GetWindow()))
        Subclass->UnsubclassWindow();
    KeptText = GetNativeText();
    if (destroyWindow && GetNativeWindow() != nullptr && platform::DestroyChildWindow(Window))
        Window = nullptr;
    return true;
}

// Installs a font of tenths tenths of a point, on the control when there
// is one. False when the system made none; the old font stays then.
bool TextBox::SetNativeFont(std::int32_t tenths, const WideString& faceName)
{
    const platform::ControlFontHandle made = platform::CreateControlFont(tenths, faceName.View());
    if (made == nullptr)
        return false;
    auto font = std::make_unique<FontHandle>(made);
    if (GetNativeWindow() != nullptr)
        platform::SendToWindow(Window, platform::kMessageSetFont, reinterpret_cast<std::uintptr_t>(made), kRedraw);
    Font = std::move(font);
    return true;
}

// The handle is kept after the control's end and may be stale, so it is
// asked each time.
platform::WindowHandle TextBox::GetNativeWindow() const
{
    return Window != nullptr && platform::IsLiveWindow(Window) ? Window : nullptr;
}

// Text and selection

// True when the text changed. A control that shows the text already isn't
// touched, so it neither reports an update nor scrolls. With ScrollLast a
// new text is scrolled down to its last line. Without a control the text
// waits for the next one.
bool TextBox::SetNativeText(const WideString& text)
{
    const platform::WindowHandle window = GetNativeWindow();
    if (window == nullptr) {
        if (KeptText == text)
            return false;
        KeptText = text;
        return true;
    }
    if (platform::GetControlText(window) == text.View())
        return false;
    platform::SetControlText(window, text.View());
    if (ScrollLast) {
        const std::intptr_t lines = platform::SendToWindow(window, platform::kMessageEditGetLineCount, 0, 0);
        platform::SendToWindow(window, platform::kMessageEditLineScroll, 0, lines);
    }
    return true;
}

WideString TextBox::GetNativeText() const
{
    const platform::WindowHandle window = GetNativeWindow();
    return window != nullptr ? WideString(platform::GetControlText(window)) : KeptText;
}

// (0, -1) selects everything, (-1, -1) nothing; the caret is scrolled into
// view.
void TextBox::SelectRange(std::int32_t start, std::int32_t end)
{
    const platform::WindowHandle window = GetNativeWindow();
    if (window == nullptr)
        return;
    platform::SendToWindow(window, platform::kMessageEditSetSelection,
                           static_cast<std::uintptr_t>(static_cast<std::intptr_t>(start)), end);
    platform::SendToWindow(window, platform::kMessageEditScrollCaret, 0, 0);
}

// An optional minus sign first, then digits as the runtime's wide-character
// class knows them, with one point at most among them. So the empty text,
// a lone "-" and a lone "." pass.
bool TextBox::IsNumberText() const
{
    const WideString text = GetNativeText();
    std::size_t at = !text.IsEmpty() && text[0] == u'-' ? 1 : 0;
    bool point = false;
    for (; at < text.Length(); ++at) {
        const char16_t unit = text[at];
        if (unit == u'.' && !point)
            point = true;
        else if (!std::iswdigit(static_cast<std::wint_t>(unit)))
            return false;
    }
    return true;
}

// For the owning EditableText

bool TextBox::SetAlign(std::int32_t align)
{
    if (Align == align)
        return false;
    Align = align;
    return true;
}

std::uint32_t TextBox::NativeStyle() const
{
    std::uint32_t style = platform::kEditStyleBase;
    if (MultiLine)
        style |= platform::kEditStyleMultiLine;
    if (VScroll)
        style |= platform::kEditStyleVerticalScrollBar;
    if (Align == kAlignCentre)
        style |= platform::kEditStyleCentre;
    else if (Align == kAlignRight)
        style |= platform::kEditStyleRight;
    if (ReadOnly)
        style |= platform::kEditStyleReadOnly;
    if (Password)
        style |= platform::kEditStylePassword;
    return style;
}
