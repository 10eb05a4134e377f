#pragma once

#include <cstdint>
#include <string_view>

// Files by handle, with 64-bit positions. Each call is one call of the
// operating system. The checker only reads; the copy of a file that mends
// its header writes a new file.
namespace platform {

struct FileObject;
using FileHandle = FileObject*;

constexpr std::uint32_t kFileAttributeNormal = 0x80;
constexpr std::uint32_t kFileFlagSequentialScan = 0x08000000;
// Transfers bypass the system's cache; each must start on a sector boundary
// and cover whole sectors, from memory aligned by AllocateTransferMemory.
constexpr std::uint32_t kFileFlagNoBuffering = 0x20000000;

enum class SeekOrigin { Begin = 0, Current = 1, End = 2 };

// Opens an existing file for reading, sharing reading and writing with
// others. flags are file attributes and flags as the system knows them;
// where a flag means nothing to the system it is ignored. Null on failure.
FileHandle OpenFileForReading(std::u16string_view path, std::uint32_t flags);
// Opens path for reading and writing with the same sharing: a new file
// when createNew is set (null when one exists), else an existing one.
FileHandle OpenFileForWriting(std::u16string_view path, std::uint32_t flags, bool createNew);
void CloseFile(FileHandle file);

// One read; the bytes that came, or -1 on failure.
std::int64_t ReadFromFile(FileHandle file, void* destination, std::uint32_t count);
// One write; the bytes written, or -1 on failure.
std::int64_t WriteToFile(FileHandle file, const void* source, std::uint32_t count);
// Moves the file pointer; a position behind the end of the file is allowed,
// one before its start is not. newPosition receives the new place.
bool SeekFile(FileHandle file, std::int64_t offset, SeekOrigin origin, std::int64_t& newPosition);
bool QueryFileSize(FileHandle file, std::int64_t& size);
// Cuts the file, or lengthens it, to end at the file pointer.
bool SetFileEnd(FileHandle file);
// Waits until what was written to the file is on the disk.
bool FlushFileToDisk(FileHandle file);

// The unit of unbuffered transfers on the volume of the file at fullPath:
// the bytes per sector, or what the system reports as the alignment of
// direct I/O. False when it can't be told.
bool QueryBytesPerSector(std::u16string_view fullPath, std::uint32_t& bytes);
// Memory aligned for unbuffered transfers (to a page), zero-filled; null
// when there is none. A transfer into its end is the fastest: where the
// system has huge pages, the whole ones there are such.
void* AllocateTransferMemory(std::size_t bytes);
void FreeTransferMemory(void* memory, std::size_t bytes);

} // namespace platform
