#pragma once

#include "files/FileStream.h"

#include <cstdint>
#include <string>
#include <vector>

// The end of the audio of a data chunk whose size is a placeholder, told
// from the chunks behind it: a run of well-formed chunks (ids of printable
// ASCII, each behind the one before, on its pad byte) that ends exactly at
// the end of the file. The run is looked for in the last kAudioEndWindow
// bytes of the file; chunks written behind the audio are small. Owned by
// the walk of one tidy copy, on its thread.
constexpr std::int64_t kAudioEndWindow = 16 * 1024 * 1024;

class AudioEnd {
public:
    bool Find(FileStream& input, std::int64_t audioStart, std::int64_t fileSize);

    // Where the run of chunks behind the audio begins: none, one reading, or
    // two when the first can't be told for certain.
    const std::vector<std::int64_t>& Starts() const { return starts; }

    int ByteAt(std::int64_t position, std::int64_t fileSize) const;
    std::string Describe(std::int64_t start, std::int64_t fileSize) const;

private:
    std::vector<std::uint8_t> tail;
    std::vector<std::int64_t> starts;
};
