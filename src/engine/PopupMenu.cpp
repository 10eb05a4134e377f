#include "engine/PopupMenu.h"

namespace {

// The command ids start at 1: tracking gives 0 for a dismissal.
constexpr std::int32_t kFirstId = 1;

} // namespace

PopupMenu::MenuHolder::~MenuHolder()
{
    if (handle != nullptr)
        platform::DestroyMenuHandle(handle);
}

PopupMenu::~PopupMenu()
{
    DestroyMenus();
}

// Submenus go before the menus they sit in, so that no menu is destroyed
// twice through its parent.
void PopupMenu::DestroyMenus()
{
    Menus.ClearFromBack();
    Parents.Clear();
}

void PopupMenu::Reset()
{
    DestroyMenus();
    NextId = kFirstId;
    Current = 0;
    AddSubMenu(WideString());
}

bool PopupMenu::AddSubMenu(const WideString& text)
{
    auto holder = std::make_unique<MenuHolder>();
    holder->handle = platform::CreatePopupMenuHandle();
    if (holder->handle == nullptr)
        return false;
    if (!text.IsEmpty())
        platform::InsertMenuEntry(CurrentMenu(), -1, platform::kMenuByPosition | platform::kMenuPopup,
                                  reinterpret_cast<std::uintptr_t>(holder->handle), text.View());
    Menus.Add(std::move(holder));
    Parents.Add(Current);
    Current = static_cast<std::int32_t>(Menus.Count()) - 1;
    return true;
}

std::int32_t PopupMenu::AddItem(const WideString& text)
{
    if (text.IsEmpty())
        return -1;
    const platform::MenuHandle menu = CurrentMenu();
    const auto id = static_cast<std::uint32_t>(NextId);
    platform::InsertMenuEntry(menu, -1, platform::kMenuByPosition | platform::kMenuString, id, text.View());
    platform::EnableMenuEntry(menu, id, platform::kMenuByCommand | platform::kMenuEnabled);
    platform::CheckMenuEntry(menu, id, platform::kMenuByCommand | platform::kMenuUnchecked);
    ++NextId;
    return NextId - 2;
}

std::int32_t PopupMenu::Track(platform::WindowHandle owner, std::int32_t x, std::int32_t y)
{
    if (Menus.IsEmpty() || Parents.IsEmpty() || Menus.At(0)->handle == nullptr)
        return -1;
    const std::uint32_t flags = platform::kTrackReturnCommand | platform::kTrackNoNotify | platform::kTrackRightButton;
    return platform::TrackMenu(Menus.At(0)->handle, flags, x, y, owner) - 1;
}

platform::MenuHandle PopupMenu::CurrentMenu() const
{
    if (Current < 0 || static_cast<std::size_t>(Current) >= Menus.Count() ||
        static_cast<std::size_t>(Current) >= Parents.Count())
        return nullptr;
    return Menus.At(static_cast<std::size_t>(Current))->handle;
}
