#pragma once

#include "base/WideString.h"

#include <cstdint>
#include <string>
#include <vector>

// An RF64 file as the command-line checker reads it beside the check, which
// takes it for a file that is not RIFF: the RF64 chunk, whose 32-bit sizes
// may stand for the 64-bit ones of its ds64 chunk, and its top-level chunks.
// This is the one reading of ds64 that the chunk list, the levels and the
// tidy copy share. The sizes it takes are never below 0, and the end of
// what each sizes is a file position: a position and a size add up without
// overflow.
struct Rf64Chunk {
    std::uint32_t id = 0;
    std::int64_t position = 0;
    std::uint32_t size32 = 0; // the size field as it stands
    std::int64_t size = 0;    // the size meant: ds64's where the field defers to it
};

struct Rf64Layout {
    std::int64_t fileSize = 0;
    std::uint32_t riffSize32 = 0;
    std::int64_t riffSize = 0;
    std::uint32_t formType = 0;
    bool hasDs64 = false;     // a ds64 chunk of at least 24 bytes comes first
    std::uint32_t ds64Size = 0; // its size field
    std::uint64_t ds64DataSize = 0; // as it stands: see Rf64DeferredDataSize
    std::uint64_t ds64SampleCount = 0;
    std::vector<Rf64Chunk> chunks;
    // The first format chunk's body, up to 40 bytes, and its length.
    std::uint8_t format[40] = {};
    std::uint32_t formatBytes = 0;
    std::int64_t dataPosition = -1; // the first data chunk, -1 for none
    std::int64_t dataSize = 0;
};

// The 32-bit size that defers to ds64.
constexpr std::uint32_t kRf64DefersSize = 0xFFFFFFFF;

class FileStream;

// True when the file that stream has open begins with the id "RF64".
bool BeginsAsRf64(FileStream& stream);
// Reads the layout; false with the reason in problem when the file can't
// be read, is not RF64, or takes a ds64 size that no file can hold. At most
// kMostRf64Chunks top-level chunks are kept; the walk stops there.
bool ReadRf64Layout(const WideString& path, Rf64Layout& layout, std::string& problem);
// The same of the file that stream has open, read from its start.
bool ReadRf64Layout(FileStream& stream, Rf64Layout& layout, std::string& problem);
// The size that a data chunk's size field of 0xFFFFFFFF defers to: ds64's
// data size; false with the reason in problem when no file can hold it.
bool Rf64DeferredDataSize(const Rf64Layout& layout, std::int64_t& size, std::string& problem);
constexpr std::size_t kMostRf64Chunks = 100000;
