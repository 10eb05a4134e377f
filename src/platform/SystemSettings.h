#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

// What the user's system settings say about the look of the widgets: the
// colour scheme and values of the current user's registry hive.
namespace platform {

// The registry's type of a binary value.
constexpr std::uint32_t kRegistryBinary = 3;

// A colour of the system's colour scheme by its index, as the system gives
// it: red in the low byte, then green, then blue.
std::uint32_t GetSystemColour(int index);

// The horizontal resolution of the screen in dots per inch.
int GetScreenDpiX();

// The value valueName under keyPath in the current user's hive, opened for
// reading only. False when the key or the value can't be read; type is then
// 0 and data empty.
bool ReadUserRegistryValue(std::u16string_view keyPath, std::u16string_view valueName, std::uint32_t& type,
                           std::vector<std::uint8_t>& data);

} // namespace platform
