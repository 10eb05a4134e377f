#include "platform/SystemStartup.h"

#include <windows.h>
#include <commctrl.h>
// GDI+'s headers need COM's types, which the lean Windows header leaves out.
#include <objbase.h>
#include <gdiplus.h>

namespace platform {

void InitializeCom()
{
    CoInitialize(nullptr);
}

void UninitializeCom()
{
    CoUninitialize();
}

bool InitializeCommonControls(std::uint32_t classes)
{
    INITCOMMONCONTROLSEX controls{};
    static_assert(sizeof(controls) == 8, "the structure is two 32-bit fields");
    controls.dwSize = sizeof(controls);
    controls.dwICC = classes;
    return InitCommonControlsEx(&controls) != FALSE;
}

int StartGdiplus(GdiplusToken& token)
{
    Gdiplus::GdiplusStartupInput input;
    input.GdiplusVersion = 1;
    input.DebugEventCallback = nullptr;
    input.SuppressBackgroundThread = FALSE;
    input.SuppressExternalCodecs = FALSE;
    ULONG_PTR key = 0;
    Gdiplus::Status status = Gdiplus::GdiplusStartup(&key, &input, nullptr);
    token = key;
    return static_cast<int>(status);
}

void StopGdiplus(GdiplusToken token)
{
    Gdiplus::GdiplusShutdown(token);
}

} // namespace platform
