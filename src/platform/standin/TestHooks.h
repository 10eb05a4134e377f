#pragma once

#include "platform/MessageQueue.h"
#include "platform/Window.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What tests of the window logic see and force in the stand-in of
// windows, queues and timers. For tests only; the program never calls it.
namespace platform::testing {

// Forgets every window, queued message, timer, hook and recorded call, and
// sets the clock and the work area back. No thread may be waiting then.
void ResetStandIn();

// Runs hook whenever a thread finds its queue empty in WaitForMessage,
// before the clock moves on to the next timer; with no timer pending it runs
// again for as long as the queue stays empty, so it has to post something
// (a quit request, say) sooner or later. An empty hook removes it.
void SetQueueWaitHook(std::function<void()> hook);
// Posts to the calling thread's own queue, without window.
void PostToOwnQueue(std::uint32_t id, std::uintptr_t wParam = 0, std::intptr_t lParam = 0);
// The next count calls of WaitForMessage on the calling thread give -1.
void FailNextWaits(int count);
// The next dialog creation fails before any message reaches the procedure.
void FailNextDialogCreation();

void SetWorkArea(PixelRect area);

// What a window of the stand-in looks like from outside.
struct WindowRecord {
    PixelRect bounds;
    bool shown = false;
    int lastShowCommand = -1;
    bool acceptsDrops = false;
    // Timer id and period in milliseconds, in the order they were set.
    std::vector<std::pair<std::uintptr_t, std::uint32_t>> timers;
};

std::vector<WindowHandle> LiveWindows();
// The first live window with this caption, or null.
WindowHandle FindWindowByCaption(std::u16string_view caption);
// false when window is not alive.
bool DescribeWindow(WindowHandle window, WindowRecord& record);

// The start-up, window and shutdown calls made so far, in their order, as
// "InitializeCom", "CreateDialogWindow 129", "ShowWindowAs 1" and so on;
// the record is emptied.
std::vector<std::string> TakeCallLog();
// COM initialisations not yet undone, GDI+ sessions not yet stopped.
int OpenComInitializations();
int OpenGdiplusSessions();

} // namespace platform::testing

// What tests of the worker see and force in the stand-in of threads and
// desktop message boxes.
namespace platform::testing {

// The next ResumeSuspendedThread fails and the thread stays suspended.
void FailNextThreadResume();

struct DesktopMessageBoxRecord {
    std::u16string text;
    std::u16string caption;
    std::uint32_t type = 0;
};

// With hold, a desktop message box stays up until CloseDesktopMessageBoxes,
// as the system's waits for its user; without, the default, it is recorded
// and closes at once. Either way the record of earlier boxes is forgotten.
void HoldDesktopMessageBoxes(bool hold);
// Takes the oldest box shown and not yet taken, waiting up to timeoutMs for
// one; false when none came.
bool WaitForDesktopMessageBox(DesktopMessageBoxRecord& box, std::uint32_t timeoutMs);
// Closes every box that is up with the OK button.
void CloseDesktopMessageBoxes();

} // namespace platform::testing

// What tests of the widgets' look set in the stand-in's system settings.
// ResetStandIn puts the defaults back: the classic colour scheme and an
// empty registry.
namespace platform::testing {

void SetSystemColour(int index, std::uint32_t colour);
void SetUserRegistryValue(std::u16string_view keyPath, std::u16string_view valueName, std::uint32_t type,
                          std::vector<std::uint8_t> data);

} // namespace platform::testing

// The mouse and the keyboard of the stand-in. Activations and changes of
// the capture are recorded in the call log as "ActivateWindow",
// "CaptureMouse" and "ReleaseMouseCapture".
namespace platform::testing {

void SetCursorScreenPosition(std::int32_t x, std::int32_t y);
void SetShiftKeyDown(bool down);
void SetControlKeyDown(bool down);

} // namespace platform::testing

// The stand-in's shell: drops, the open-file dialog, owned message boxes and
// the version resource. Shell opens are recorded in the call log as
// "OpenWithShell <verb> <file>".
namespace platform::testing {

// A drop of these files, as the wParam of a drop message.
std::uintptr_t MakeDrop(std::vector<std::u16string> files);
// Drops made and not yet finished.
int OpenDrops();
// The product version in every file's version block; the program's own
// (ProgramResources.h) after ResetStandIn.
void SetProductVersion(std::u16string version);
// What the open-file dialog gives from now on; empty is a cancel. Each
// showing is recorded in the call log as "ShowOpenFileDialog".
void SetOpenFileDialogAnswer(std::u16string path);
// The message boxes of windows shown since the last call, oldest first.
std::vector<DesktopMessageBoxRecord> TakeMessageBoxes();

} // namespace platform::testing

// The stand-in's edit controls, as they stand.
namespace platform::testing {

struct EditControlRecord {
    WindowHandle parent = nullptr;
    std::uint32_t style = 0;
    std::u16string text;
    std::int32_t selectionStart = 0;
    std::int32_t selectionEnd = 0;
    std::int32_t firstVisibleLine = 0;
    // In the parent's client pixels.
    PixelRect bounds;
    // The height and family of the font set on it; 0 and empty for none.
    std::int32_t fontHeight = 0;
    std::u16string fontFace;
};

// false when window is no live edit control.
bool DescribeEditControl(WindowHandle window, EditControlRecord& record);

} // namespace platform::testing

// The stand-in's text: what was drawn, and the metrics of its families.
namespace platform::testing {

// One string drawn, as text or as a path made of it.
struct DrawnText {
    enum class Kind { String, PathOutline, PathFill };
    Kind kind = Kind::String;
    std::u16string text;
    std::u16string family;
    // Points for a string, world units for a path.
    float size = 0;
    std::int32_t style = 0;
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    std::int32_t alignment = 0;
    std::int32_t lineAlignment = 0;
    std::int32_t formatFlags = 0;
    // The brush's colour, or the pen's for an outline.
    std::uint32_t colour = 0;
    float penWidth = 0;
    std::int32_t penLineJoin = 0;
    std::int32_t smoothingMode = 0;
    std::int32_t textRenderingHint = 0;
};

// The texts drawn since the last call, oldest first.
std::vector<DrawnText> TakeDrawnTexts();

// One stroke of a path of lines and curves, each element written as
// "line x1,y1 x2,y2" or "curve x0,y0 x1,y1 x2,y2".
struct DrawnPath {
    std::vector<std::string> elements;
    std::uint32_t colour = 0;
    float penWidth = 0;
    std::int32_t smoothingMode = 0;
};

// The paths stroked since the last call, oldest first.
std::vector<DrawnPath> TakeDrawnPaths();
// Families of the stand-in exist for every name but the empty one and
// those named here. Their em height is 2048 units and their line spacing
// 2472 unless set here.
void SetMissingFontFamily(std::u16string name);
void SetFontLineSpacing(std::u16string name, std::uint16_t spacing);

} // namespace platform::testing

// The stand-in's tooltips and popup menus. What is done to a tooltip is
// recorded in the call log as "ToolTipCreate", "ToolTipText <text>",
// "ToolTipPosition <x> <y>", "ToolTipTrack on" and so on; each tracking of a
// menu as "TrackMenu <x> <y>".
namespace platform::testing {

// The command id that tracking a menu gives from now on; 0 dismisses.
void SetMenuChoice(std::int32_t commandId);
// Menus made and not yet destroyed.
int OpenMenus();
// The entries of the menu tracked last, each its command id and text.
std::vector<std::pair<std::uintptr_t, std::u16string>> TrackedMenuEntries();

} // namespace platform::testing
