#include "platform/SystemStartup.h"

#include "platform/standin/StandIn.h"

#include <string>

namespace platform {

// Nothing to start on this platform: the stand-in counts the calls and
// records their order.

void InitializeCom()
{
    standin::RecordCall("InitializeCom");
    std::lock_guard lock(standin::State().mutex);
    ++standin::State().comInitializations;
}

void UninitializeCom()
{
    standin::RecordCall("UninitializeCom");
    std::lock_guard lock(standin::State().mutex);
    --standin::State().comInitializations;
}

bool InitializeCommonControls(std::uint32_t classes)
{
    standin::RecordCall("InitializeCommonControls " + std::to_string(classes));
    return true;
}

int StartGdiplus(GdiplusToken& token)
{
    standin::RecordCall("StartGdiplus");
    std::lock_guard lock(standin::State().mutex);
    token = static_cast<GdiplusToken>(++standin::State().gdiplusSessions);
    return 0;
}

void StopGdiplus(GdiplusToken token)
{
    standin::RecordCall("StopGdiplus " + std::to_string(token));
    std::lock_guard lock(standin::State().mutex);
    --standin::State().gdiplusSessions;
}

} // namespace platform
