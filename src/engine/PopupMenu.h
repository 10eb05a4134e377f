#pragma once

#include "base/Array.h"
#include "base/WideString.h"
#include "platform/Menu.h"
#include "platform/Window.h"

#include <cstdint>
#include <memory>

// A native popup menu of texts, made for one choice: Reset it, add the
// items, Track it at a point of the screen, and read the index of the item
// chosen, counted from 0 in the order of adding, or -1. Items go to the
// menu made last. A local object of a command; main window's thread only.
class PopupMenu {
public:
    PopupMenu() = default;
    ~PopupMenu();
    PopupMenu(const PopupMenu&) = delete;
    PopupMenu& operator=(const PopupMenu&) = delete;

    // Destroys every menu and makes an empty root.
    void Reset();
    // A submenu of the current menu, titled text, that takes the next
    // items; with an empty text a menu of its own, as the root is made.
    bool AddSubMenu(const WideString& text);
    // The item's index; -1 for an empty text, which adds nothing and
    // takes no index.
    std::int32_t AddItem(const WideString& text);
    // Shows the menu at x, y in screen pixels for owner until the user
    // chooses or dismisses it: the index chosen, or -1.
    std::int32_t Track(platform::WindowHandle owner, std::int32_t x, std::int32_t y);

private:
    // Owns one menu handle.
    struct MenuHolder {
        platform::MenuHandle handle = nullptr;
        ~MenuHolder();
    };

    // The menu that receives items, or null when there is none, on which
    // every call fails without effect.
    platform::MenuHandle CurrentMenu() const;
    void DestroyMenus();

    Array<std::unique_ptr<MenuHolder>> Menus;
    Array<std::int32_t> Parents;
    std::int32_t Current = 0;
    std::int32_t NextId = 1;
};
