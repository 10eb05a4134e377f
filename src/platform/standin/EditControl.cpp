#include "platform/EditControl.h"

#include "platform/Input.h"
#include "platform/standin/StandIn.h"
#include "platform/standin/TestHooks.h"

#include <algorithm>

// The stand-in's text entry holds its text and selection and answers the
// entry's messages. It takes typed characters as character messages, knows
// no keys and draws nothing; each change of its text reaches the parent as
// the update command, as the system's does. A press puts the caret at the
// end, since the stand-in has no glyphs to find a place between.
namespace platform {

using standin::State;

namespace {

constexpr std::uint32_t kMessageSetText = 0x000C;
constexpr std::uint32_t kStyleMultiLineBit = 0x0004;
constexpr std::uint32_t kStyleReadOnlyBit = 0x0800;
constexpr char16_t kBackspace = 0x08;

bool IsEditLocked(WindowHandle window)
{
    return window != nullptr && State().windows.count(window) != 0 && window->edit.has_value();
}

std::int32_t Length(const standin::EditControl& edit)
{
    return static_cast<std::int32_t>(edit.text.size());
}

std::int32_t LineCount(const standin::EditControl& edit)
{
    if ((edit.style & kStyleMultiLineBit) == 0)
        return 1;
    std::int32_t lines = 1;
    for (std::size_t at = edit.text.find(u"\r\n"); at != std::u16string::npos; at = edit.text.find(u"\r\n", at + 2))
        ++lines;
    return lines;
}

// (0, -1) takes everything and a start of -1 drops the selection, leaving
// the caret where the selection ended; other offsets are held to the text.
void Select(standin::EditControl& edit, std::int32_t start, std::int32_t end)
{
    if (start == -1) {
        edit.selectionStart = edit.selectionEnd;
        return;
    }
    const std::int32_t length = Length(edit);
    start = start < 0 || start > length ? length : start;
    end = end < 0 || end > length ? length : end;
    edit.selectionStart = std::min(start, end);
    edit.selectionEnd = std::max(start, end);
}

// One typed character: it replaces the selection, or a backspace takes it
// or the character before the caret. Enter breaks the line of a many-line
// entry only. False when the text stays as it was.
bool Type(standin::EditControl& edit, char16_t character)
{
    if ((edit.style & kStyleReadOnlyBit) != 0)
        return false;
    std::u16string typed;
    std::int32_t start = edit.selectionStart;
    if (character == kBackspace) {
        if (start == edit.selectionEnd && start > 0)
            --start;
    } else if (character == u'\r' && (edit.style & kStyleMultiLineBit) != 0) {
        typed = u"\r\n";
    } else if (character >= u' ') {
        typed = character;
    }
    if (typed.empty() && start == edit.selectionEnd)
        return false;
    edit.text.replace(start, edit.selectionEnd - start, typed);
    edit.selectionStart = edit.selectionEnd = start + static_cast<std::int32_t>(typed.size());
    return true;
}

std::intptr_t EditProcedure(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    standin::StandIn& state = State();
    bool changed = false;
    std::intptr_t result = 0;
    WindowHandle parent = nullptr;
    {
        std::lock_guard lock(state.mutex);
        if (!IsEditLocked(window))
            return 0;
        standin::EditControl& edit = *window->edit;
        parent = window->parent;
        switch (id) {
        case kMessageSetText:
            edit.text = *reinterpret_cast<const std::u16string_view*>(lParam);
            edit.selectionStart = edit.selectionEnd = 0;
            edit.firstVisibleLine = 0;
            changed = true;
            result = 1;
            break;
        case kMessageChar:
            changed = Type(edit, static_cast<char16_t>(wParam));
            break;
        case kMessageEditGetSelection:
            result = static_cast<std::intptr_t>((edit.selectionEnd & 0xFFFF) << 16 | (edit.selectionStart & 0xFFFF));
            break;
        case kMessageEditSetSelection:
            Select(edit, static_cast<std::int32_t>(wParam), static_cast<std::int32_t>(lParam));
            break;
        case kMessageEditScrollCaret:
            result = 1;
            break;
        case kMessageEditGetLineCount:
            result = LineCount(edit);
            break;
        case kMessageEditLineScroll:
            if ((edit.style & kStyleMultiLineBit) != 0) {
                edit.firstVisibleLine =
                    std::clamp<std::int32_t>(edit.firstVisibleLine + static_cast<std::int32_t>(lParam), 0,
                                             LineCount(edit) - 1);
                result = 1;
            }
            break;
        case kMessageSetFont:
            edit.font = reinterpret_cast<ControlFontHandle>(wParam);
            break;
        case kMessageLeftButtonDown:
            edit.selectionStart = edit.selectionEnd = Length(edit);
            break;
        default:
            break;
        }
    }
    if (id == kMessageLeftButtonDown)
        SetKeyboardFocus(window);
    if (changed)
        standin::CallProcedure(parent, kMessageCommand, std::uintptr_t{kEditNotifyUpdate} << 16,
                               reinterpret_cast<std::intptr_t>(window));
    return result;
}

WindowProcedureObject editProcedure{EditProcedure};

} // namespace

WindowHandle CreateEditControl(WindowHandle parent, std::uint32_t style)
{
    if (!IsLiveWindow(parent))
        return nullptr;
    auto* window = new WindowObject;
    window->owner = CurrentThreadId();
    window->parent = parent;
    window->shown = true;
    window->windowProcedure = &editProcedure;
    window->edit.emplace();
    window->edit->style = style;
    std::lock_guard lock(State().mutex);
    State().windows.insert(window);
    return window;
}

bool DestroyChildWindow(WindowHandle window)
{
    if (!IsLiveWindow(window))
        return false;
    standin::DestroyWindowTree(window);
    return true;
}

std::u16string GetControlText(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return IsEditLocked(window) ? window->edit->text : std::u16string();
}

// Goes through the window's procedure, as the system's does, so that a
// hook sees it.
bool SetControlText(WindowHandle window, std::u16string_view text)
{
    return standin::CallProcedure(window, kMessageSetText, 0, reinterpret_cast<std::intptr_t>(&text)) != 0;
}

PixelRect GetChildBounds(WindowHandle window)
{
    std::lock_guard lock(State().mutex);
    return State().windows.count(window) != 0 ? window->bounds : PixelRect{};
}

bool PlaceChildWindow(WindowHandle window, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height)
{
    std::lock_guard lock(State().mutex);
    if (State().windows.count(window) == 0)
        return false;
    window->bounds = {x, y, x + width, y + height};
    return true;
}

bool testing::DescribeEditControl(WindowHandle window, EditControlRecord& record)
{
    std::lock_guard lock(State().mutex);
    if (!IsEditLocked(window))
        return false;
    const standin::EditControl& edit = *window->edit;
    record.parent = window->parent;
    record.style = edit.style;
    record.text = edit.text;
    record.selectionStart = edit.selectionStart;
    record.selectionEnd = edit.selectionEnd;
    record.firstVisibleLine = edit.firstVisibleLine;
    record.bounds = window->bounds;
    record.fontHeight = edit.font != nullptr ? edit.font->height : 0;
    record.fontFace = edit.font != nullptr ? edit.font->face : std::u16string();
    return true;
}

} // namespace platform
