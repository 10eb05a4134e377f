#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

// What the fuzz targets share: how an input becomes text, and how a broken
// invariant ends the run so that the fuzzer keeps the input.

// The input's bytes in pairs as UTF-16 units, so that every unit, CR, LF
// and zero among them, can occur; an odd last byte is dropped.
inline std::u16string UnitsFromBytes(const std::uint8_t* data, std::size_t size)
{
    std::u16string units(size / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
    return units;
}

[[noreturn]] inline void FailInvariant(const char* what)
{
    std::fprintf(stderr, "invariant broken: %s\n", what);
    std::abort();
}

// A file of this process for the input or the output of one run, in
// memory where the system has a folder for that.
inline std::string ScratchPath(const char* suffix)
{
    const char* folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    return std::string(folder) + "/sondara-fuzz-" + std::to_string(getpid()) + suffix;
}

// Writes the input's bytes to path; a file that can't be written breaks
// the run.
inline void WriteScratch(const std::string& path, const std::uint8_t* data, std::size_t size)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file || (size > 0 && std::fwrite(data, 1, size, file) != size))
        FailInvariant("can't write the input file");
    std::fclose(file);
}

// The size of the file at path, -1 when there is none.
inline long ScratchSize(const std::string& path)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return -1;
    std::fseek(file, 0, SEEK_END);
    const long size = std::ftell(file);
    std::fclose(file);
    return size;
}

// The bytes of the file at path; empty when there is none.
inline std::string ScratchBytes(const std::string& path)
{
    std::string bytes;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return bytes;
    char piece[4096];
    for (std::size_t got; (got = std::fread(piece, 1, sizeof piece, file)) > 0;)
        bytes.append(piece, got);
    std::fclose(file);
    return bytes;
}
