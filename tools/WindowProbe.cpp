// window-probe X Y: where the top-level window at screen point X, Y has its
// client area, for the end-to-end tests that drive Sondara.exe with real X
// input and must know where its widgets are, and what the controls of a
// native window such as a message box say. It only looks: it sends no
// message but requests for a window's text, and posts nothing. Prints, one
// item a line:
//
//   client LEFT TOP WIDTH HEIGHT   (screen pixels)
//   dpi N                           (the screen's horizontal DPI)
//   class NAME
//   title TEXT                      (UTF-8)
//   child CLASS TEXT                (each child window, in Z order)
//   focus CLASS                     (the window of its thread that has the
//                                    keyboard; "-" for none)
//   idle yes|no                     (whether the window's process has
//                                    handled all input sent to it before:
//                                    the probe waits up to 10 s for that)
//
// window-probe --class NAME: the visible top-level windows of class NAME,
// a tooltip's or a popup menu's say, one a line:
//
//   window LEFT TOP RIGHT BOTTOM TEXT   (screen pixels; the text in UTF-8)
//
// Exit status 0, or 1 when no window is at that point, 2 for bad usage.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>

namespace {

std::string Utf8(const wchar_t* text)
{
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (length <= 1)
        return {};
    std::string bytes(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), length, nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(length - 1));
    return bytes;
}

std::string ClassOf(HWND window)
{
    if (window == nullptr)
        return "-";
    wchar_t className[256] = {};
    GetClassNameW(window, className, 256);
    return Utf8(className);
}

BOOL CALLBACK PrintChild(HWND child, LPARAM)
{
    wchar_t className[256] = {};
    GetClassNameW(child, className, 256);
    wchar_t text[1024] = {};
    GetWindowTextW(child, text, 1024);
    std::printf("child %s %s\n", Utf8(className).c_str(), Utf8(text).c_str());
    return TRUE;
}

BOOL CALLBACK PrintOfClass(HWND window, LPARAM className)
{
    wchar_t name[256] = {};
    GetClassNameW(window, name, 256);
    if (!IsWindowVisible(window) || lstrcmpiW(name, reinterpret_cast<const wchar_t*>(className)) != 0)
        return TRUE;
    RECT bounds{};
    GetWindowRect(window, &bounds);
    // A tooltip keeps its text to itself and gives it only when asked; the
    // system's own title of another process's window is empty.
    wchar_t text[1024] = {};
    DWORD_PTR copied = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(text), SMTO_ABORTIFHUNG, 5000, &copied);
    std::printf("window %ld %ld %ld %ld %s\n", bounds.left, bounds.top, bounds.right, bounds.bottom,
                Utf8(text).c_str());
    return TRUE;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc == 3 && std::wcscmp(argv[1], L"--class") == 0) {
        EnumWindows(PrintOfClass, reinterpret_cast<LPARAM>(argv[2]));
        return 0;
    }
    if (argc != 3) {
        std::fputs("usage: window-probe X Y | window-probe --class NAME\n", stderr);
        return 2;
    }
    const POINT point{std::wcstol(argv[1], nullptr, 10), std::wcstol(argv[2], nullptr, 10)};
    HWND window = WindowFromPoint(point);
    if (window != nullptr)
        window = GetAncestor(window, GA_ROOT);
    if (window == nullptr) {
        std::fprintf(stderr, "window-probe: no window at %ld, %ld\n", point.x, point.y);
        return 1;
    }

    RECT client{};
    GetClientRect(window, &client);
    POINT origin{0, 0};
    ClientToScreen(window, &origin);
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    wchar_t className[256] = {};
    GetClassNameW(window, className, 256);
    wchar_t title[512] = {};
    GetWindowTextW(window, title, 512);

    std::printf("client %ld %ld %ld %ld\n", origin.x, origin.y, client.right - client.left,
                client.bottom - client.top);
    std::printf("dpi %d\n", dpi);
    std::printf("class %s\n", Utf8(className).c_str());
    std::printf("title %s\n", Utf8(title).c_str());
    EnumChildWindows(window, PrintChild, 0);
    // A program that lags behind its input still has keys to handle, and a
    // test must not press the next ones (Ctrl, Shift) before it has.
    DWORD processId = 0;
    const DWORD threadId = GetWindowThreadProcessId(window, &processId);
    bool idle = false;
    if (HANDLE process = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, processId)) {
        idle = WaitForInputIdle(process, 10000) == 0;
        CloseHandle(process);
    }
    GUITHREADINFO thread{};
    thread.cbSize = sizeof(thread);
    if (GetGUIThreadInfo(threadId, &thread))
        std::printf("focus %s\n", ClassOf(thread.hwndFocus).c_str());
    std::printf("idle %s\n", idle ? "yes" : "no");
    return 0;
}
