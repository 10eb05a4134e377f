#pragma once

#include "platform/Window.h"

#include <cstdint>
#include <string_view>

// The system's tooltip window in tracking form: a small popup owned by a
// host window that shows one tool's text where it is told, from the moment
// tracking is switched on until it is switched off. Every call on a window
// that is gone does nothing. Called on the thread of the host window.
namespace platform {

// The tool's flags, with the system's values: the tip listens to the host's
// mouse messages, is placed by the program and stands where it is put.
constexpr std::uint32_t kToolTipSubclass = 0x0010;
constexpr std::uint32_t kToolTipTrack = 0x0020;
constexpr std::uint32_t kToolTipAbsolute = 0x0080;

// The one tool of a tooltip window, as the system's record of it holds it.
// The text isn't part of it: it is handed over with each update only.
struct ToolTipTool {
    std::uint32_t flags = 0;
    WindowHandle window = nullptr;
    std::uintptr_t id = 0;
};

// Makes a tooltip window owned by host: no title, no style, default place
// and size. Null when it could not be made.
WindowHandle CreateToolTipWindow(WindowHandle host);
bool DestroyToolTipWindow(WindowHandle tip);

void AddToolTipTool(WindowHandle tip, const ToolTipTool& tool);
void DeleteToolTipTool(WindowHandle tip, const ToolTipTool& tool);
void UpdateToolTipText(WindowHandle tip, const ToolTipTool& tool, std::u16string_view text);
// Shows the tip at its track position, or hides it.
void ActivateToolTipTracking(WindowHandle tip, const ToolTipTool& tool, bool active);
// Where the tip stands, in screen pixels; 16 bits of each are kept.
void SetToolTipTrackPosition(WindowHandle tip, std::int32_t x, std::int32_t y);

} // namespace platform
