#pragma once

#include "platform/Window.h"

#include <cstdint>
#include <string_view>

// The system's popup menus: made empty, filled with items by position,
// shown at a point of the screen until the user chooses or dismisses, and
// destroyed. Every call on a null menu fails without effect. Called on the
// thread of the owner window.
namespace platform {

struct MenuObject;
using MenuHandle = MenuObject*;

// Flags of InsertMenuEntry, with the system's values: the position counts
// items from 0 (-1 is the end); the entry is a text item whose value is its
// command id, or a submenu whose value is the submenu's handle.
constexpr std::uint32_t kMenuByPosition = 0x0400;
constexpr std::uint32_t kMenuString = 0x0000;
constexpr std::uint32_t kMenuPopup = 0x0010;
// Flags of EnableMenuEntry and CheckMenuEntry: the item goes by command id,
// and is enabled, or unchecked.
constexpr std::uint32_t kMenuByCommand = 0x0000;
constexpr std::uint32_t kMenuEnabled = 0x0000;
constexpr std::uint32_t kMenuUnchecked = 0x0000;
// Flags of TrackMenu: the call returns the command chosen and sends none,
// and either mouse button chooses.
constexpr std::uint32_t kTrackReturnCommand = 0x0100;
constexpr std::uint32_t kTrackNoNotify = 0x0080;
constexpr std::uint32_t kTrackRightButton = 0x0002;

// A new empty popup menu, or null.
MenuHandle CreatePopupMenuHandle();
bool DestroyMenuHandle(MenuHandle menu);
bool InsertMenuEntry(MenuHandle menu, std::int32_t position, std::uint32_t flags, std::uintptr_t value,
                     std::u16string_view text);
bool EnableMenuEntry(MenuHandle menu, std::uint32_t item, std::uint32_t flags);
bool CheckMenuEntry(MenuHandle menu, std::uint32_t item, std::uint32_t flags);
// Shows menu at x, y in screen pixels for owner and runs a message loop of
// its own until it closes. With kTrackReturnCommand the result is the id
// of the chosen item, or 0 when the menu was dismissed.
std::int32_t TrackMenu(MenuHandle menu, std::uint32_t flags, std::int32_t x, std::int32_t y, WindowHandle owner);

} // namespace platform
