// Sondara.exe as a user meets it: its window, its size, its ways out.
#include "ProgramProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

namespace {

INT_PTR CALLBACK IgnoreMessages(HWND, UINT, WPARAM, LPARAM)
{
    return FALSE;
}

// The client size that the system gives the main dialog's template here:
// a hidden copy of the template, loaded from the program's file, measured
// with the same fonts and DPI as the program's own window.
SIZE TemplateClientSize()
{
    SIZE size{};
    HMODULE module = LoadLibraryExW(ProgramProcess::ProgramPath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (module == nullptr)
        return size;
    HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(129), MAKEINTRESOURCEW(5));
    HGLOBAL loaded = resource != nullptr ? LoadResource(module, resource) : nullptr;
    auto* dialogTemplate = static_cast<const DLGTEMPLATE*>(loaded != nullptr ? LockResource(loaded) : nullptr);
    if (dialogTemplate != nullptr) {
        HWND copy =
            CreateDialogIndirectParamW(GetModuleHandleW(nullptr), dialogTemplate, nullptr, IgnoreMessages, 0);
        if (copy != nullptr) {
            RECT units{0, 0, 241, 145};
            MapDialogRect(copy, &units);
            RECT client{};
            GetClientRect(copy, &client);
            EXPECT_EQ(client.right, units.right);
            EXPECT_EQ(client.bottom, units.bottom);
            size = {units.right, units.bottom};
            DestroyWindow(copy);
        }
    }
    FreeLibrary(module);
    return size;
}

DWORD CloseAndWait(const ProgramProcess& program, const std::function<void(HWND)>& close)
{
    HWND window = program.WaitForWindow();
    if (window == nullptr)
        return STILL_ACTIVE;
    close(window);
    return program.WaitForExit();
}

} // namespace

TEST(ProgramWindow, OpensWithTheTemplatesSizeCentredInTheWorkArea)
{
    ProgramProcess program;
    ASSERT_TRUE(program.Started());
    HWND window = program.WaitForWindow();
    ASSERT_NE(window, nullptr);

    RECT client{};
    GetClientRect(window, &client);
    SIZE expected = TemplateClientSize();
    ASSERT_GT(expected.cx, 0);
    EXPECT_EQ(client.right, expected.cx);
    EXPECT_EQ(client.bottom, expected.cy);
    // 362 x 236 at 96 DPI with Wine's Tahoma standing in for "MS Shell Dlg";
    // other fonts, DPI settings or locales give other sizes.
    std::printf("client area %ld x %ld\n", client.right, client.bottom);
    RecordProperty("ClientWidth", static_cast<int>(client.right));
    RecordProperty("ClientHeight", static_cast<int>(client.bottom));

    LONG style = GetWindowLongW(window, GWL_STYLE);
    EXPECT_EQ(style & (WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX), WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX);
    EXPECT_EQ(style & (WS_THICKFRAME | WS_MAXIMIZEBOX), 0);
    EXPECT_TRUE(IsWindowVisible(window));
    wchar_t className[32] = {};
    GetClassNameW(window, className, 32);
    EXPECT_STREQ(className, L"#32770");

    RECT frame{};
    GetWindowRect(window, &frame);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    ASSERT_TRUE(GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor));
    const RECT& area = monitor.rcWork;
    LONG width = frame.right - frame.left;
    LONG height = frame.bottom - frame.top;
    EXPECT_EQ(frame.left, (area.left + area.right) / 2 - width / 2);
    EXPECT_EQ(frame.top, (area.top + area.bottom) / 2 - height / 2);

    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(program.WaitForExit(), 2u);
}

TEST(ProgramWindow, EveryWayOutEndsWithExitCodeTwo)
{
    struct Way {
        const char* name;
        std::function<void(HWND)> close;
    };
    const Way ways[] = {
        {"close box (WM_CLOSE)", [](HWND w) { PostMessageW(w, WM_CLOSE, 0, 0); }},
        {"window menu close", [](HWND w) { PostMessageW(w, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {"command with id 2", [](HWND w) { PostMessageW(w, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0); }},
        {"Esc", [](HWND w) { PostMessageW(w, WM_KEYDOWN, VK_ESCAPE, 0x00010001); }},
    };
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        ProgramProcess program;
        ASSERT_TRUE(program.Started());
        EXPECT_EQ(CloseAndWait(program, way.close), 2u);
    }
}

TEST(ProgramWindow, OtherMessagesLeaveItRunning)
{
    ProgramProcess program;
    HWND window = program.WaitForWindow();
    ASSERT_NE(window, nullptr);
    PostMessageW(window, WM_COMMAND, MAKEWPARAM(1, BN_CLICKED), 0);
    PostMessageW(window, WM_KEYDOWN, VK_RETURN, 0x001C0001);
    PostMessageW(window, WM_DROPFILES, 0, 0);
    PostMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(10, 10));
    InvalidateRect(window, nullptr, TRUE);
    // A round trip through the program's queue: everything posted before has
    // been handled once this returns.
    DWORD_PTR answer = 0;
    EXPECT_NE(SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_BLOCK, 10000, &answer), 0);
    Sleep(300);
    EXPECT_EQ(program.WaitForExit(0), static_cast<DWORD>(STILL_ACTIVE));
    EXPECT_TRUE(IsWindow(window));
    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(program.WaitForExit(), 2u);
}

TEST(ProgramWindow, TwoCopiesRunSideBySideAndIgnoreTheirCommandLine)
{
    ProgramProcess first;
    ProgramProcess second(L"C:\\sounds\\a.wav --check");
    HWND firstWindow = first.WaitForWindow();
    HWND secondWindow = second.WaitForWindow();
    ASSERT_NE(firstWindow, nullptr);
    ASSERT_NE(secondWindow, nullptr);
    EXPECT_NE(firstWindow, secondWindow);
    PostMessageW(secondWindow, WM_CLOSE, 0, 0);
    EXPECT_EQ(second.WaitForExit(), 2u);
    EXPECT_TRUE(IsWindow(firstWindow));
    PostMessageW(firstWindow, WM_CLOSE, 0, 0);
    EXPECT_EQ(first.WaitForExit(), 2u);
}
