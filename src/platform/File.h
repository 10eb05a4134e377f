#pragma once

#include <cstdint>
#include <string_view>

// Files by handle, the way the system reads them: opened for reading only,
// with 64-bit positions. Each call is one call of the operating system.
namespace platform {

struct FileObject;
using FileHandle = FileObject*;

constexpr std::uint32_t kFileAttributeNormal = 0x80;
constexpr std::uint32_t kFileFlagSequentialScan = 0x08000000;

enum class SeekOrigin { Begin = 0, Current = 1, End = 2 };

// Opens an existing file for reading, sharing reading and writing with
// others. flags are file attributes and flags as the system knows them;
// where a flag means nothing to the system it is ignored. Null on failure.
FileHandle OpenFileForReading(std::u16string_view path, std::uint32_t flags);
void CloseFile(FileHandle file);

// One read; the bytes that came, or -1 on failure.
std::int64_t ReadFromFile(FileHandle file, void* destination, std::uint32_t count);
// One write; the bytes written, or -1 on failure.
std::int64_t WriteToFile(FileHandle file, const void* source, std::uint32_t count);
// Moves the file pointer; a position behind the end of the file is allowed,
// one before its start is not. newPosition receives the new place.
bool SeekFile(FileHandle file, std::int64_t offset, SeekOrigin origin, std::int64_t& newPosition);
bool QueryFileSize(FileHandle file, std::int64_t& size);

} // namespace platform
