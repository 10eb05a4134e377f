#include "platform/File.h"

#include "platform/posix/Utf8Path.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

int Descriptor(FileHandle file)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(file)) - 1;
}

} // namespace

// The handle is the descriptor plus one, so that descriptor 0 is no null.
FileHandle OpenFileForReading(std::u16string_view path, std::uint32_t flags)
{
    std::string bytes = posix::PathToBytes(path);
    int descriptor;
    do
        descriptor = open(bytes.c_str(), O_RDONLY | O_CLOEXEC);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return nullptr;
    // A directory opens for reading on POSIX but not as a file on Windows.
    struct stat info;
    if (fstat(descriptor, &info) != 0 || S_ISDIR(info.st_mode)) {
        close(descriptor);
        return nullptr;
    }
    if (flags & kFileFlagSequentialScan)
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return reinterpret_cast<FileHandle>(static_cast<std::intptr_t>(descriptor) + 1);
}

void CloseFile(FileHandle file)
{
    close(Descriptor(file));
}

std::int64_t ReadFromFile(FileHandle file, void* destination, std::uint32_t count)
{
    ssize_t got;
    do
        got = read(Descriptor(file), destination, count);
    while (got < 0 && errno == EINTR);
    return got < 0 ? -1 : got;
}

std::int64_t WriteToFile(FileHandle file, const void* source, std::uint32_t count)
{
    ssize_t written;
    do
        written = write(Descriptor(file), source, count);
    while (written < 0 && errno == EINTR);
    return written < 0 ? -1 : written;
}

bool SeekFile(FileHandle file, std::int64_t offset, SeekOrigin origin, std::int64_t& newPosition)
{
    int whence = origin == SeekOrigin::Begin ? SEEK_SET : origin == SeekOrigin::Current ? SEEK_CUR : SEEK_END;
    off_t position = lseek(Descriptor(file), static_cast<off_t>(offset), whence);
    if (position < 0)
        return false;
    newPosition = position;
    return true;
}

bool QueryFileSize(FileHandle file, std::int64_t& size)
{
    struct stat info;
    if (fstat(Descriptor(file), &info) != 0)
        return false;
    size = info.st_size;
    return true;
}

} // namespace platform
