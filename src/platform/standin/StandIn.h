#pragma once

#include "platform/ControlFont.h"
#include "platform/Menu.h"
#include "platform/MessageQueue.h"
#include "platform/Paint.h"
#include "platform/ThreadState.h"
#include "platform/Window.h"
#include "platform/WindowHook.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

// The in-memory stand-in of windows, message queues and timers that the
// window logic runs on in the Linux tests. Time is a clock of its own that
// moves only when a thread waits for a message with nothing queued and a
// timer pending, so tests run the same way every time and take no time.
// One lock guards all of it; procedures are called without it.

// A device context of the stand-in is the window it belongs to; it has no
// pixels of its own.
struct platform::DeviceContextObject {
    WindowHandle window = nullptr;
};

// A window procedure of the stand-in: a function that answers a message.
struct platform::WindowProcedureObject {
    std::intptr_t (*call)(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam);
};

// A font of the stand-in's controls: the height in pixels, negative for the
// characters' own height, and the family.
struct platform::ControlFontObject {
    std::int32_t height = 0;
    std::u16string face;
};

namespace platform::standin {

// What an edit control of the stand-in holds (standin/EditControl.cpp).
struct EditControl {
    std::uint32_t style = 0;
    std::u16string text;
    std::int32_t selectionStart = 0;
    std::int32_t selectionEnd = 0;
    std::int32_t firstVisibleLine = 0;
    ControlFontHandle font = nullptr;
};

// What a tooltip window of the stand-in holds (standin/ToolTipControl.cpp).
struct ToolTip {
    int tools = 0;
    std::u16string text;
    bool tracking = false;
};

} // namespace platform::standin

// A popup menu of the stand-in: its entries in order, each the command id
// or submenu handle and the text.
struct platform::MenuObject {
    std::vector<std::pair<std::uintptr_t, std::u16string>> entries;
};

struct platform::WindowObject {
    ThreadId owner = 0;
    DialogProcedure procedure = nullptr;
    void* context = nullptr;
    int templateId = 0;
    std::u16string caption;
    PixelRect bounds;
    bool shown = false;
    int lastShowCommand = -1;
    bool acceptsDrops = false;
    bool inputEnabled = true;
    DeviceContextObject deviceContext{this};
    // A child window lies in its parent's client area; its bounds are in
    // the parent's client pixels.
    WindowHandle parent = nullptr;
    // What answers the window's messages instead of the dialog procedure
    // and the default dialog processing, when set; and the link of a hook.
    WindowProcedureHandle windowProcedure = nullptr;
    const WindowHookLink* hookLink = nullptr;
    std::optional<standin::EditControl> edit;
    std::optional<standin::ToolTip> toolTip;
};

namespace platform::standin {

// The resolution of the stand-in's screen, and of every device context and
// bitmap.
constexpr int kScreenDpi = 96;

// The frame the stand-in draws around a dialog's client area.
constexpr std::int32_t kFrameSide = 3;
constexpr std::int32_t kFrameCaption = 22;
// The work area of the stand-in's one monitor.
constexpr PixelRect kDefaultWorkArea{0, 0, 1280, 1000};

struct Timer {
    WindowHandle window = nullptr;
    std::uintptr_t id = 0;
    std::uint32_t period = 0;
    std::uint64_t due = 0;
};

struct ThreadQueue {
    std::deque<Message> posted;
    bool quitPosted = false;
    int quitCode = 0;
    int failingWaits = 0;
};

struct StandIn {
    std::mutex mutex;
    std::condition_variable posted;
    std::map<ThreadId, ThreadQueue> queues;
    std::set<WindowHandle> windows;
    std::vector<Timer> timers;
    std::uint64_t now = 0;
    PixelRect workArea = kDefaultWorkArea;
    int failingDialogCreations = 0;
    std::function<void()> waitHook;
    std::vector<std::string> calls;
    int comInitializations = 0;
    int gdiplusSessions = 0;
    // The mouse and the keyboard.
    std::int32_t cursorX = 0;
    std::int32_t cursorY = 0;
    bool shiftDown = false;
    bool controlDown = false;
    WindowHandle capture = nullptr;
    WindowHandle focus = nullptr;
    // Popup menus made and not destroyed, what the next one tracked gives
    // back, and the entries of the last one tracked.
    std::set<MenuHandle> menus;
    std::int32_t menuChoice = 0;
    std::vector<std::pair<std::uintptr_t, std::u16string>> trackedMenu;
};

StandIn& State();
// The stand-in's desktop: always alive, never in the list of windows.
WindowHandle Desktop();
// Puts the colour scheme and the registry of the stand-in back to their
// defaults; its own lock guards them.
void ResetSystemSettings();
// Forgets the open-file dialog's answer and the recorded message boxes.
void ResetShell();
// Forgets the drawn texts and the families' settings.
void ResetFonts();
// Puts the product version of the version blocks back to the program's own.
void ResetVersions();

// Adds one line to the record of start-up, window and shutdown calls.
void RecordCall(std::string call);
// Calls the window procedure of window. That of a dialog calls its dialog
// procedure and, when that doesn't handle the message, does what the
// system's default dialog processing does. The lock must not be held.
std::intptr_t CallProcedure(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam);
// The window procedure of every dialog, which a hook may replace.
WindowProcedureHandle DialogWindowProcedure();
// Hides window and takes the keyboard out of it, sends it its two last
// messages, and its children theirs between them, and forgets them all. The
// lock must not be held.
void DestroyWindowTree(WindowHandle window);
// Queues a message for the thread that owns window, or for the calling
// thread when window is null. Expects the lock held.
bool PostLocked(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam);

} // namespace platform::standin
