#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Folders of the file system, for the checker's walk of a folder tree.
namespace platform {

enum class EntryKind { File, Folder, Other, Broken };

// One name in a folder, and what it leads to: links are followed, and a
// link that leads nowhere is Broken.
struct FolderEntry {
    std::u16string name;
    EntryKind kind = EntryKind::Other;
};

// Tells folders, and files, apart whatever the path that leads to them.
struct FolderIdentity {
    std::uint64_t volume = 0;
    std::uint64_t index = 0;
    bool operator==(const FolderIdentity&) const = default;
};

// The entries of a folder, without "." and "..", in no particular order;
// false when the folder can't be read.
bool ListFolder(std::u16string_view path, std::vector<FolderEntry>& entries);
bool GetFolderIdentity(std::u16string_view path, FolderIdentity& identity);
// The paths that a pattern with * or ? in its last part names, for systems
// whose shell leaves that to the program; false when the pattern has no
// wildcard or the shell expands them (POSIX).
bool ExpandWildcards(std::u16string_view pattern, std::vector<std::u16string>& paths);

} // namespace platform
