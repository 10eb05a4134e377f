#pragma once

#include <cstdint>
#include <string>

class FileLayout;

// Where a file's audio lies and what its format chunk says, whichever
// container it is in: what a measuring pass needs before it reads.
struct AudioPlace {
    std::uint8_t format[40] = {}; // the format chunk's body, up to an extensible format's sub-format
    std::uint32_t formatBytes = 0;
    std::int64_t dataPosition = -1; // of the data chunk's header; -1 when there is none
    std::int64_t frameCount = 0;    // those both declared and present
    std::int64_t dataBytes = 0;     // the data chunk's body as declared (RF64: by ds64), pad byte left out
};

// A RIFF file through the walk of its layout, an RF64 file through its
// RF64 layout. False with the reason in problem for anything else, or a
// file without a format chunk; a file without a data chunk is found, its
// position -1.
bool FindAudio(FileLayout& layout, AudioPlace& place, std::string& problem);
