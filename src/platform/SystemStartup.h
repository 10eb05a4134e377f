#pragma once

#include <cstdint>

// The services a windowed program starts before its first window and stops
// after its last: COM on the calling thread, the common control classes and
// GDI+.
namespace platform {

// Common control classes of InitializeCommonControls, with the system's values.
constexpr std::uint32_t kCommonControlBarClasses = 0x0004;

// GDI+'s key for stopping it again.
using GdiplusToken = std::uintptr_t;

// The results are the system's and nobody needs to look at them: a later
// call that needs the service fails by itself.
void InitializeCom();
void UninitializeCom();
bool InitializeCommonControls(std::uint32_t classes);
// Starts GDI+ version 1 with no debug hook, its own background thread and
// its external codecs. token receives the key; the result is GDI+'s status.
int StartGdiplus(GdiplusToken& token);
void StopGdiplus(GdiplusToken token);

} // namespace platform
