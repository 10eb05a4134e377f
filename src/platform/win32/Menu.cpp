#include "platform/Menu.h"

#include "platform/win32/WinHandles.h"
#include "platform/win32/WinText.h"

#include <windows.h>

#include <string>

namespace platform {

namespace {

HMENU Hmenu(MenuHandle menu) { return reinterpret_cast<HMENU>(menu); }

} // namespace

MenuHandle CreatePopupMenuHandle()
{
    return reinterpret_cast<MenuHandle>(CreatePopupMenu());
}

bool DestroyMenuHandle(MenuHandle menu)
{
    return menu != nullptr && DestroyMenu(Hmenu(menu)) != FALSE;
}

bool InsertMenuEntry(MenuHandle menu, std::int32_t position, std::uint32_t flags, std::uintptr_t value,
                     std::u16string_view text)
{
    if (menu == nullptr)
        return false;
    const std::u16string copy(text);
    return InsertMenuW(Hmenu(menu), static_cast<UINT>(position), flags, value, win32::Wide(copy)) != FALSE;
}

bool EnableMenuEntry(MenuHandle menu, std::uint32_t item, std::uint32_t flags)
{
    return menu != nullptr && EnableMenuItem(Hmenu(menu), item, flags) != -1;
}

bool CheckMenuEntry(MenuHandle menu, std::uint32_t item, std::uint32_t flags)
{
    return menu != nullptr && CheckMenuItem(Hmenu(menu), item, flags) != static_cast<DWORD>(-1);
}

std::int32_t TrackMenu(MenuHandle menu, std::uint32_t flags, std::int32_t x, std::int32_t y, WindowHandle owner)
{
    if (menu == nullptr)
        return 0;
    const RECT none{};
    return TrackPopupMenu(Hmenu(menu), flags, x, y, 0, win32::Hwnd(owner), &none);
}

} // namespace platform
