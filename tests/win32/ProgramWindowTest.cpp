// Sondara.exe as a user meets it: its window, its size, its ways out.
#include "ProgramProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

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
    const std::vector<unsigned char> bytes = ProgramProcess::Resource(MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(129));
    if (bytes.empty())
        return size;
    const auto* dialogTemplate = reinterpret_cast<const DLGTEMPLATE*>(bytes.data());
    HWND copy = CreateDialogIndirectParamW(GetModuleHandleW(nullptr), dialogTemplate, nullptr, IgnoreMessages, 0);
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
    return size;
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

// Two copies side by side, one with a command line that it ignores, each
// ended by a way out that only the system offers: the window menu's close
// and the cancel command. The close box and Esc are pressed for real by the
// end-to-end scenarios, and which messages close the window is the start-up
// logic's test.
TEST(ProgramWindow, TwoCopiesRunSideBySideAndEndWithExitCodeTwo)
{
    ProgramProcess first;
    ProgramProcess second(L"C:\\sounds\\a.wav --check");
    HWND firstWindow = first.WaitForWindow();
    HWND secondWindow = second.WaitForWindow();
    ASSERT_NE(firstWindow, nullptr);
    ASSERT_NE(secondWindow, nullptr);
    EXPECT_NE(firstWindow, secondWindow);
    PostMessageW(secondWindow, WM_SYSCOMMAND, SC_CLOSE, 0);
    EXPECT_EQ(second.WaitForExit(), 2u);
    EXPECT_TRUE(IsWindow(firstWindow));
    PostMessageW(firstWindow, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    EXPECT_EQ(first.WaitForExit(), 2u);
}
