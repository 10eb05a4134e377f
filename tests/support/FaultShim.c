/* Failures of the system made to happen, for tests of the checker as built:
 * preloaded (LD_PRELOAD) into it, this library watches the descriptors of
 * the files whose path contains SONDARA_FAULT_PATH and makes their reads
 *   - fail with EIO once they reach the byte SONDARA_FAULT_EIO_AFTER of the
 *     file (a read across it brings the bytes before it first), and/or
 *   - come short: at most SONDARA_FAULT_SHORT_READS bytes a call, and/or
 *   - come slowly: each after SONDARA_FAULT_READ_DELAY_MS milliseconds;
 * makes the first open of such a file take SONDARA_FAULT_OPEN_DELAY_MS
 * milliseconds, as a file on a slow or sleeping disk does; and counts the
 * opens of such a file that succeed, writing the count at exit into the file
 * SONDARA_FAULT_OPEN_COUNT names.
 * For a file opened for direct transfers both numbers must be whole sectors,
 * as the system's own short reads are. Every other file reads as usual. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

enum { kDescriptors = 4096 };

/* Written by whichever thread opens or closes, read by the one that reads. */
static unsigned char watched[kDescriptors];
static const char* faultPath;
static long long eioAfter = -1;
static long long shortReads = 0;
static long long openDelay = 0;
static long long readDelay = 0;
static int delayed;
static const char* openCountPath;
static int opens;

static long long NumberFrom(const char* name, long long otherwise)
{
    const char* text = getenv(name);
    return text && *text ? strtoll(text, NULL, 10) : otherwise;
}

__attribute__((constructor)) static void ReadSettings(void)
{
    faultPath = getenv("SONDARA_FAULT_PATH");
    if (faultPath && !*faultPath)
        faultPath = NULL;
    eioAfter = NumberFrom("SONDARA_FAULT_EIO_AFTER", -1);
    shortReads = NumberFrom("SONDARA_FAULT_SHORT_READS", 0);
    openDelay = NumberFrom("SONDARA_FAULT_OPEN_DELAY_MS", 0);
    readDelay = NumberFrom("SONDARA_FAULT_READ_DELAY_MS", 0);
    openCountPath = getenv("SONDARA_FAULT_OPEN_COUNT");
}

static void* Real(const char* name)
{
    return dlsym(RTLD_NEXT, name);
}

static int IsChosen(const char* path)
{
    return faultPath && path && strstr(path, faultPath) != NULL;
}

/* Remembers a new descriptor: watched when its path is the chosen one,
 * forgotten otherwise, since a number is used again once it is closed. */
static int Opened(int descriptor, const char* path)
{
    const int chosen = IsChosen(path);
    if (openDelay > 0 && chosen && !__atomic_exchange_n(&delayed, 1, __ATOMIC_SEQ_CST))
        usleep((useconds_t)(openDelay * 1000));
    if (descriptor >= 0 && chosen)
        __atomic_add_fetch(&opens, 1, __ATOMIC_SEQ_CST);
    if (descriptor >= 0 && descriptor < kDescriptors)
        __atomic_store_n(&watched[descriptor], chosen, __ATOMIC_SEQ_CST);
    return descriptor;
}

__attribute__((destructor)) static void WriteOpenCount(void)
{
    if (!openCountPath)
        return;
    int (*real)(const char*, int, ...) = Real("open");
    const int file = real(openCountPath, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0)
        return;
    char text[24];
    const int length = snprintf(text, sizeof text, "%d\n", __atomic_load_n(&opens, __ATOMIC_SEQ_CST));
    const ssize_t written = write(file, text, (size_t)length);
    (void)written;
    close(file);
}

static int IsWatched(int descriptor)
{
    return descriptor >= 0 && descriptor < kDescriptors && __atomic_load_n(&watched[descriptor], __ATOMIC_SEQ_CST);
}

/* How many of count bytes at position a read may bring: -1 for EIO. */
static long long Allowed(long long position, size_t count)
{
    if (readDelay > 0)
        usleep((useconds_t)(readDelay * 1000));
    long long allowed = (long long)count;
    if (shortReads > 0 && allowed > shortReads)
        allowed = shortReads;
    if (eioAfter >= 0) {
        if (position >= eioAfter)
            return -1;
        if (position + allowed > eioAfter)
            allowed = eioAfter - position;
    }
    return allowed;
}

static mode_t ModeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? (mode_t)va_arg(arguments, int) : 0;
}

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    int (*real)(const char*, int, ...) = Real("open");
    return Opened(real(path, flags, mode), path);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    int (*real)(const char*, int, ...) = Real("open64");
    return Opened(real(path, flags, mode), path);
}

int openat(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    int (*real)(int, const char*, int, ...) = Real("openat");
    return Opened(real(folder, path, flags, mode), path);
}

int openat64(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    int (*real)(int, const char*, int, ...) = Real("openat64");
    return Opened(real(folder, path, flags, mode), path);
}

/* The forms a fortified build calls when open has no mode. */
int __open_2(const char* path, int flags)
{
    int (*real)(const char*, int) = Real("__open_2");
    return Opened(real(path, flags), path);
}

int __open64_2(const char* path, int flags)
{
    int (*real)(const char*, int) = Real("__open64_2");
    return Opened(real(path, flags), path);
}

int close(int descriptor)
{
    int (*real)(int) = Real("close");
    if (descriptor >= 0 && descriptor < kDescriptors)
        __atomic_store_n(&watched[descriptor], 0, __ATOMIC_SEQ_CST);
    return real(descriptor);
}

ssize_t read(int descriptor, void* destination, size_t count)
{
    ssize_t (*real)(int, void*, size_t) = Real("read");
    if (!IsWatched(descriptor) || count == 0)
        return real(descriptor, destination, count);
    const long long allowed = Allowed((long long)lseek(descriptor, 0, SEEK_CUR), count);
    if (allowed < 0) {
        errno = EIO;
        return -1;
    }
    return real(descriptor, destination, (size_t)allowed);
}

static ssize_t ReadAt(const char* name, int descriptor, void* destination, size_t count, off_t position)
{
    ssize_t (*real)(int, void*, size_t, off_t) = Real(name);
    if (!IsWatched(descriptor) || count == 0)
        return real(descriptor, destination, count, position);
    const long long allowed = Allowed((long long)position, count);
    if (allowed < 0) {
        errno = EIO;
        return -1;
    }
    return real(descriptor, destination, (size_t)allowed, position);
}

ssize_t pread(int descriptor, void* destination, size_t count, off_t position)
{
    return ReadAt("pread", descriptor, destination, count, position);
}

ssize_t pread64(int descriptor, void* destination, size_t count, off_t position)
{
    return ReadAt("pread64", descriptor, destination, count, position);
}
