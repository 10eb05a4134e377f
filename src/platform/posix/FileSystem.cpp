#include "platform/FileSystem.h"

#include "platform/posix/Utf8Path.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace platform {

const char16_t kPathSeparator = u'/';

std::uint32_t GetPathAttributes(std::u16string_view path)
{
    struct stat info;
    if (path.empty() || stat(posix::PathToBytes(path).c_str(), &info) != 0)
        return kInvalidFileAttributes;
    return S_ISDIR(info.st_mode) ? kFileAttributeDirectory : kFileAttributeNormalFile;
}

std::u16string GetProgramPath(std::size_t maxLength)
{
    std::vector<char> buffer(PATH_MAX + 1);
    ssize_t length = readlink("/proc/self/exe", buffer.data(), PATH_MAX);
    if (length <= 0)
        return {};
    std::u16string path = posix::PathFromBytes(std::string_view(buffer.data(), static_cast<std::size_t>(length)));
    return path.size() < maxLength ? path : std::u16string();
}

std::u16string GetFullPath(std::u16string_view path)
{
    if (path.empty())
        return {};
    if (path.front() == u'/')
        return std::u16string(path);
    std::u16string current = QueryCurrentDirectory(PATH_MAX);
    if (current.empty())
        return {};
    return current + (current.back() == u'/' ? u"" : u"/") + std::u16string(path);
}

std::u16string QueryCurrentDirectory(std::size_t maxLength)
{
    std::vector<char> buffer(PATH_MAX + 1);
    if (!getcwd(buffer.data(), buffer.size()))
        return {};
    std::u16string path = posix::PathFromBytes(buffer.data());
    return path.size() <= maxLength ? path : std::u16string();
}

bool ChangeCurrentDirectory(std::u16string_view path)
{
    return !path.empty() && chdir(posix::PathToBytes(path).c_str()) == 0;
}

bool HasDrive(std::u16string_view path)
{
    return !path.empty() && path.front() == u'/';
}

bool FlushFolderOf(std::u16string_view path)
{
    std::string folder = posix::PathToBytes(path);
    const std::size_t slash = folder.rfind('/');
    folder = slash == std::string::npos ? "." : slash == 0 ? "/" : folder.substr(0, slash);
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (descriptor < 0)
        return false;
    const bool flushed = fsync(descriptor) == 0;
    close(descriptor);
    return flushed;
}

bool RemoveFile(std::u16string_view path)
{
    return unlink(posix::PathToBytes(path).c_str()) == 0;
}

bool RenameFileNoReplace(std::u16string_view from, std::u16string_view to)
{
    const std::string source = posix::PathToBytes(from);
    const std::string target = posix::PathToBytes(to);
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // A file system without the flag: a link can't replace a file either.
    if (link(source.c_str(), target.c_str()) != 0)
        return false;
    unlink(source.c_str());
    return true;
}

} // namespace platform
