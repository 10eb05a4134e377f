#include "platform/Menu.h"

#include "base/Utf8.h"
#include "platform/standin/StandIn.h"
#include "platform/standin/TestHooks.h"

#include <string>

// The stand-in's popup menus keep their entries. Tracking one shows
// nothing: it records "TrackMenu <x> <y>", keeps a copy of the entries and
// gives back the choice that the test set, 0 (a dismissal) unless set.
namespace platform {

using standin::State;

namespace {

bool IsLiveMenu(MenuHandle menu)
{
    return menu != nullptr && State().menus.count(menu) != 0;
}

} // namespace

MenuHandle CreatePopupMenuHandle()
{
    std::lock_guard lock(State().mutex);
    auto* menu = new MenuObject;
    State().menus.insert(menu);
    return menu;
}

bool DestroyMenuHandle(MenuHandle menu)
{
    std::lock_guard lock(State().mutex);
    if (!IsLiveMenu(menu))
        return false;
    State().menus.erase(menu);
    delete menu;
    return true;
}

// Only appending is known, which is all the program does.
bool InsertMenuEntry(MenuHandle menu, std::int32_t position, std::uint32_t, std::uintptr_t value,
                     std::u16string_view text)
{
    std::lock_guard lock(State().mutex);
    if (!IsLiveMenu(menu) || position != -1)
        return false;
    menu->entries.emplace_back(value, std::u16string(text));
    return true;
}

bool EnableMenuEntry(MenuHandle menu, std::uint32_t, std::uint32_t)
{
    std::lock_guard lock(State().mutex);
    return IsLiveMenu(menu);
}

bool CheckMenuEntry(MenuHandle menu, std::uint32_t, std::uint32_t)
{
    std::lock_guard lock(State().mutex);
    return IsLiveMenu(menu);
}

std::int32_t TrackMenu(MenuHandle menu, std::uint32_t, std::int32_t x, std::int32_t y, WindowHandle)
{
    std::int32_t choice = 0;
    {
        std::lock_guard lock(State().mutex);
        if (!IsLiveMenu(menu))
            return 0;
        choice = State().menuChoice;
        State().trackedMenu = menu->entries;
    }
    standin::RecordCall("TrackMenu " + std::to_string(x) + " " + std::to_string(y));
    return choice;
}

} // namespace platform

namespace platform::testing {

void SetMenuChoice(std::int32_t commandId)
{
    std::lock_guard lock(State().mutex);
    State().menuChoice = commandId;
}

int OpenMenus()
{
    std::lock_guard lock(State().mutex);
    return static_cast<int>(State().menus.size());
}

std::vector<std::pair<std::uintptr_t, std::u16string>> TrackedMenuEntries()
{
    std::lock_guard lock(State().mutex);
    return State().trackedMenu;
}

} // namespace platform::testing
