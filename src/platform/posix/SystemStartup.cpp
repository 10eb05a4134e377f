#include "platform/SystemStartup.h"

#include "platform/posix/StandIn.h"

#include <string>

namespace platform {

// Nothing to start on this platform: the stand-in counts the calls and
// records their order.

void InitializeCom()
{
    posix::RecordCall("InitializeCom");
    std::lock_guard lock(posix::State().mutex);
    ++posix::State().comInitializations;
}

void UninitializeCom()
{
    posix::RecordCall("UninitializeCom");
    std::lock_guard lock(posix::State().mutex);
    --posix::State().comInitializations;
}

bool InitializeCommonControls(std::uint32_t classes)
{
    posix::RecordCall("InitializeCommonControls " + std::to_string(classes));
    return true;
}

int StartGdiplus(GdiplusToken& token)
{
    posix::RecordCall("StartGdiplus");
    std::lock_guard lock(posix::State().mutex);
    token = static_cast<GdiplusToken>(++posix::State().gdiplusSessions);
    return 0;
}

void StopGdiplus(GdiplusToken token)
{
    posix::RecordCall("StopGdiplus " + std::to_string(token));
    std::lock_guard lock(posix::State().mutex);
    --posix::State().gdiplusSessions;
}

} // namespace platform
