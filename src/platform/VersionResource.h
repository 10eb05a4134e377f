#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The version resource of a program file: its raw block, and the values
// in it by their sub-block paths.
namespace platform {

// The size of path's version block; 0 when it has none.
std::uint32_t GetVersionBlockSize(std::u16string_view path);
// Reads the block into size bytes at data; false on failure.
bool ReadVersionBlock(std::u16string_view path, std::uint8_t* data, std::uint32_t size);
// The text at subBlock, such as "\StringFileInfo\000004b0\ProductVersion",
// of a block read as above; false when the block has none.
bool QueryVersionText(const std::uint8_t* block, std::u16string_view subBlock, std::u16string& text);

} // namespace platform
