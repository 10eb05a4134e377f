#pragma once

#include "platform/Window.h"

#include <cstdint>
#include <string>
#include <string_view>

// The system's text entry, in one-line and many-line form: a child window
// that a text field lays over its rectangle while somebody types in it.
// Its selection, scrolling and font go by SendToWindow with the messages
// below, and it tells its parent of every change of its text by a command
// message. Called on the thread that made the parent.
namespace platform {

// Styles of the entry, with the system's values. Every entry is a visible
// child that clips its siblings and children and scrolls sideways as one
// types; the others add to that.
constexpr std::uint32_t kEditStyleBase = 0x56000080;
// Many lines, and Enter starts a new one.
constexpr std::uint32_t kEditStyleMultiLine = 0x00001004;
constexpr std::uint32_t kEditStyleVerticalScrollBar = 0x00200000;
constexpr std::uint32_t kEditStyleCentre = 0x00000001;
constexpr std::uint32_t kEditStyleRight = 0x00000002;
// No typing, and the view follows new lines down.
constexpr std::uint32_t kEditStyleReadOnly = 0x00000840;
constexpr std::uint32_t kEditStylePassword = 0x00000020;

// Messages of the entry, with the system's ids. The selection is read as
// one result, its start in the low 16 bits and its end in the next 16; it
// is set from wParam to lParam, where (0, -1) selects everything and
// (-1, -1) nothing.
constexpr std::uint32_t kMessageEditGetSelection = 0x00B0;
constexpr std::uint32_t kMessageEditSetSelection = 0x00B1;
// Scrolls by lParam lines and wParam characters.
constexpr std::uint32_t kMessageEditLineScroll = 0x00B6;
constexpr std::uint32_t kMessageEditScrollCaret = 0x00B7;
constexpr std::uint32_t kMessageEditGetLineCount = 0x00BA;
// The code, in the high 16 bits of the wParam of the command message that
// the entry sends its parent with itself as lParam: its text changed, by
// typing or by SetControlText, and is about to be shown.
constexpr std::uint32_t kEditNotifyUpdate = 0x0400;

// The wParam of a press with the left button down.
constexpr std::uintptr_t kMouseKeyLeftButton = 0x0001;

// Makes an empty entry of style as a child of parent, at no size until it
// is placed. Null when it could not be made.
WindowHandle CreateEditControl(WindowHandle parent, std::uint32_t style);
// Destroys a child window; false when it wasn't alive.
bool DestroyChildWindow(WindowHandle window);

// The text of a child window, with CR LF between lines; empty for a window
// that is gone.
std::u16string GetControlText(WindowHandle window);
bool SetControlText(WindowHandle window, std::u16string_view text);

// A child window's rectangle in its parent's client pixels.
PixelRect GetChildBounds(WindowHandle window);
// Moves and sizes a child window in its parent's client pixels, above its
// siblings.
bool PlaceChildWindow(WindowHandle window, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

} // namespace platform
