#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Paths and the file system, beyond reading one file.
namespace platform {

constexpr std::uint32_t kInvalidFileAttributes = 0xFFFFFFFF;
constexpr std::uint32_t kFileAttributeDirectory = 0x10;
constexpr std::uint32_t kFileAttributeNormalFile = 0x80;

// The separator that the system puts between folders of a path.
extern const char16_t kPathSeparator;

// The attributes of a path, kInvalidFileAttributes when it can't be asked.
std::uint32_t GetPathAttributes(std::u16string_view path);
// The full path of the program's own file, at most maxLength units; empty on failure.
std::u16string GetProgramPath(std::size_t maxLength);
// The absolute form of path; empty on failure.
std::u16string GetFullPath(std::u16string_view path);
// The current directory, at most maxLength units; empty on failure.
std::u16string QueryCurrentDirectory(std::size_t maxLength);
// Makes path the process's current directory; false when it can't be.
bool ChangeCurrentDirectory(std::u16string_view path);
// True when path begins at a root of its own: a drive letter and colon on
// Windows, the root folder on POSIX. Such a path doesn't depend on the
// current directory.
bool HasDrive(std::u16string_view path);
// Removes a file; false when it can't be.
bool RemoveFile(std::u16string_view path);
// Gives the file at from the name to, never replacing a file that is there
// already: false then, and when the rename fails.
bool RenameFileNoReplace(std::u16string_view from, std::u16string_view to);
// Waits until the names in the folder that holds path, a rename among
// them, are on the disk; false when that can't be done.
bool FlushFolderOf(std::u16string_view path);

} // namespace platform
