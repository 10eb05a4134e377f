#include "platform/VersionResource.h"

#include "platform/ProgramResources.h"
#include "platform/standin/StandIn.h"
#include "platform/standin/TestHooks.h"

#include <cstring>
#include <mutex>

// The stand-in has no version resources: every file has one small block
// of its own making, whose product version is the program's own unless a
// test sets another.
namespace platform {

namespace {

constexpr char kMagic[8] = {'S', 'T', 'A', 'N', 'D', 'V', 'E', 'R'};
constexpr char16_t kProductVersionPath[] = u"\\StringFileInfo\\000004b0\\ProductVersion";

struct VersionState {
    std::mutex mutex;
    std::u16string productVersion = u"" SONDARA_VERSION_TEXT;
};

VersionState& Versions()
{
    static VersionState state;
    return state;
}

} // namespace

std::uint32_t GetVersionBlockSize(std::u16string_view path)
{
    return path.empty() ? 0 : sizeof kMagic;
}

bool ReadVersionBlock(std::u16string_view path, std::uint8_t* data, std::uint32_t size)
{
    if (path.empty() || size < sizeof kMagic)
        return false;
    std::memcpy(data, kMagic, sizeof kMagic);
    return true;
}

bool QueryVersionText(const std::uint8_t* block, std::u16string_view subBlock, std::u16string& text)
{
    if (block == nullptr || std::memcmp(block, kMagic, sizeof kMagic) != 0 || subBlock != kProductVersionPath)
        return false;
    std::lock_guard lock(Versions().mutex);
    text = Versions().productVersion;
    return true;
}

void standin::ResetVersions()
{
    std::lock_guard lock(Versions().mutex);
    Versions().productVersion = u"" SONDARA_VERSION_TEXT;
}

void testing::SetProductVersion(std::u16string version)
{
    std::lock_guard lock(Versions().mutex);
    Versions().productVersion = std::move(version);
}

} // namespace platform
