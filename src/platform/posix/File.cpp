#include "platform/File.h"

#include "platform/posix/Utf8Path.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace platform {

namespace {

int Descriptor(FileHandle file)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(file)) - 1;
}

// Opens with O_DIRECT where unbuffered transfers are asked for. A file
// system that refuses direct I/O (tmpfs does, with EINVAL) gets the same
// open without it: the caller's transfers keep their sector rule, and
// only the cache is no longer bypassed.
//
// A directory opens for reading on POSIX but not as a file on Windows: it
// gives -1 here too.
int OpenDescriptor(const std::string& bytes, int mode, std::uint32_t flags)
{
    int descriptor = -1;
    if (flags & kFileFlagNoBuffering) {
        do
            descriptor = open(bytes.c_str(), mode | O_DIRECT | O_CLOEXEC, 0666);
        while (descriptor < 0 && errno == EINTR);
    }
    if (descriptor < 0 && (!(flags & kFileFlagNoBuffering) || errno == EINVAL)) {
        do
            descriptor = open(bytes.c_str(), mode | O_CLOEXEC, 0666);
        while (descriptor < 0 && errno == EINTR);
    }
    struct stat info;
    if (descriptor >= 0 && (fstat(descriptor, &info) != 0 || S_ISDIR(info.st_mode))) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

FileHandle HandleOf(int descriptor)
{
    return reinterpret_cast<FileHandle>(static_cast<std::intptr_t>(descriptor) + 1);
}

// The first number in a file of sysfs, 0 when there is none.
std::uint32_t ReadSysNumber(const std::string& path)
{
    std::FILE* file = std::fopen(path.c_str(), "r");
    if (!file)
        return 0;
    unsigned long value = 0;
    if (std::fscanf(file, "%lu", &value) != 1)
        value = 0;
    std::fclose(file);
    return static_cast<std::uint32_t>(value);
}

} // namespace

// The handle is the descriptor plus one, so that descriptor 0 is no null.
FileHandle OpenFileForReading(std::u16string_view path, std::uint32_t flags)
{
    int descriptor = OpenDescriptor(posix::PathToBytes(path), O_RDONLY, flags);
    if (descriptor < 0)
        return nullptr;
    if (flags & kFileFlagSequentialScan)
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return HandleOf(descriptor);
}

FileHandle OpenFileForWriting(std::u16string_view path, std::uint32_t flags, bool createNew)
{
    int descriptor = OpenDescriptor(posix::PathToBytes(path), O_RDWR | (createNew ? O_CREAT | O_EXCL : 0), flags);
    return descriptor < 0 ? nullptr : HandleOf(descriptor);
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

bool FlushFileToDisk(FileHandle file)
{
    return fsync(Descriptor(file)) == 0;
}

bool SetFileEnd(FileHandle file)
{
    off_t end = lseek(Descriptor(file), 0, SEEK_CUR);
    return end >= 0 && ftruncate(Descriptor(file), end) == 0;
}

// The kernel's direct-I/O alignment where it reports one (statx), else the
// logical block size of the device that holds the file (sysfs, for a whole
// disk or a partition of one).
bool QueryBytesPerSector(std::u16string_view fullPath, std::uint32_t& bytes)
{
    const std::string path = posix::PathToBytes(fullPath);
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return false;
#ifdef STATX_DIOALIGN
    struct statx extended;
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_DIOALIGN, &extended) == 0 && (extended.stx_mask & STATX_DIOALIGN) &&
        extended.stx_dio_offset_align > 0) {
        bytes = extended.stx_dio_offset_align;
        return true;
    }
#endif
    const std::string device = "/sys/dev/block/" + std::to_string(major(info.st_dev)) + ":" +
                               std::to_string(minor(info.st_dev));
    for (const char* queue : {"/queue/logical_block_size", "/../queue/logical_block_size"}) {
        if (std::uint32_t size = ReadSysNumber(device + queue)) {
            bytes = size;
            return true;
        }
    }
    // No device behind the file (tmpfs, a network share): its transfers are
    // buffered anyway, and the usual sector serves.
    bytes = 512;
    return true;
}

// The memory ends on a boundary of 2 MiB and asks for huge pages, so that
// the whole 2 MiB stretches at its end (a read of 4 MiB behind a little
// room) can be two pages rather than a thousand: the kernel pins a read's
// pages and the disk's driver maps them for every transfer, and with huge
// pages a 4 MiB read past the cache took about two thirds of the time
// (faster than dd's into small pages). Where the system gives no huge
// pages, the advice changes nothing.
void* AllocateTransferMemory(std::size_t bytes)
{
    constexpr std::size_t kHugePage = 2 << 20;
    const std::size_t room = bytes + kHugePage;
    void* whole = mmap(nullptr, room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (whole == MAP_FAILED)
        return nullptr;
    const auto start = reinterpret_cast<std::uintptr_t>(whole);
    const std::uintptr_t end = (start + room) & ~std::uintptr_t{kHugePage - 1};
    const std::uintptr_t memory = end - bytes;
    if (memory > start)
        munmap(whole, memory - start);
    if (start + room > end)
        munmap(reinterpret_cast<void*>(end), start + room - end);
    madvise(reinterpret_cast<void*>(memory), bytes, MADV_HUGEPAGE);
    return reinterpret_cast<void*>(memory);
}

void FreeTransferMemory(void* memory, std::size_t bytes)
{
    if (memory)
        munmap(memory, bytes);
}

} // namespace platform
