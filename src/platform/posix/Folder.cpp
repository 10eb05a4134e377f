#include "platform/Folder.h"

#include "platform/posix/Utf8Path.h"

#include <cstring>
#include <dirent.h>
#include <sys/stat.h>

namespace platform {

bool ListFolder(std::u16string_view path, std::vector<FolderEntry>& entries)
{
    const std::string folder = posix::PathToBytes(path);
    DIR* stream = opendir(folder.c_str());
    if (!stream)
        return false;
    while (const dirent* entry = readdir(stream)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        FolderEntry result;
        result.name = posix::PathFromBytes(entry->d_name);
        struct stat info;
        const std::string full = folder + (folder.empty() || folder.back() == '/' ? "" : "/") + entry->d_name;
        if (stat(full.c_str(), &info) != 0)
            result.kind = lstat(full.c_str(), &info) == 0 ? EntryKind::Broken : EntryKind::Other;
        else if (S_ISDIR(info.st_mode))
            result.kind = EntryKind::Folder;
        else if (S_ISREG(info.st_mode))
            result.kind = EntryKind::File;
        entries.push_back(std::move(result));
    }
    closedir(stream);
    return true;
}

bool GetFolderIdentity(std::u16string_view path, FolderIdentity& identity)
{
    struct stat info;
    if (stat(posix::PathToBytes(path).c_str(), &info) != 0)
        return false;
    identity.volume = static_cast<std::uint64_t>(info.st_dev);
    identity.index = static_cast<std::uint64_t>(info.st_ino);
    return true;
}

bool ExpandWildcards(std::u16string_view, std::vector<std::u16string>&)
{
    return false;
}

} // namespace platform
