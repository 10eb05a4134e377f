#include "platform/SystemSettings.h"

#include "platform/standin/StandIn.h"
#include "platform/standin/TestHooks.h"

#include <map>
#include <mutex>
#include <string>
#include <utility>

// The stand-in's system settings: the default colours of the classic
// scheme for the four indexes that the widgets ask for, a screen of 96 DPI
// and a registry that holds only what tests put in it.
namespace platform {

namespace {

struct RegistryValue {
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
};

struct Settings {
    std::mutex mutex;
    std::map<int, std::uint32_t> colours;
    std::map<std::pair<std::u16string, std::u16string>, RegistryValue> registry;
};

Settings& TheSettings()
{
    static Settings settings;
    return settings;
}

std::map<int, std::uint32_t> DefaultColours()
{
    return {{15, 0xF0F0F0}, {16, 0xA0A0A0}, {20, 0xFFFFFF}, {22, 0xE3E3E3}};
}

} // namespace

std::uint32_t GetSystemColour(int index)
{
    Settings& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    if (settings.colours.empty())
        settings.colours = DefaultColours();
    const auto found = settings.colours.find(index);
    return found == settings.colours.end() ? 0 : found->second;
}

int GetScreenDpiX()
{
    return standin::kScreenDpi;
}

bool ReadUserRegistryValue(std::u16string_view keyPath, std::u16string_view valueName, std::uint32_t& type,
                           std::vector<std::uint8_t>& data)
{
    Settings& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    const auto found = settings.registry.find({std::u16string(keyPath), std::u16string(valueName)});
    if (found == settings.registry.end()) {
        type = 0;
        data.clear();
        return false;
    }
    type = found->second.type;
    data = found->second.data;
    return true;
}

void standin::ResetSystemSettings()
{
    Settings& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    settings.colours = DefaultColours();
    settings.registry.clear();
}

void testing::SetSystemColour(int index, std::uint32_t colour)
{
    Settings& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    if (settings.colours.empty())
        settings.colours = DefaultColours();
    settings.colours[index] = colour;
}

void testing::SetUserRegistryValue(std::u16string_view keyPath, std::u16string_view valueName, std::uint32_t type,
                                   std::vector<std::uint8_t> data)
{
    Settings& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    settings.registry[{std::u16string(keyPath), std::u16string(valueName)}] = RegistryValue{type, std::move(data)};
}

} // namespace platform
