#include "check/Rf64File.h"

#include "files/FileStream.h"

#include <cstring>

namespace {

std::uint32_t U32(const std::uint8_t* bytes)
{
    return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

std::int64_t U64(const std::uint8_t* bytes)
{
    return static_cast<std::int64_t>(U32(bytes) | static_cast<std::uint64_t>(U32(bytes + 4)) << 32);
}

constexpr std::uint32_t kIdDs64 = 0x34367364; // "ds64"
constexpr std::uint32_t kIdFmt = 0x20746D66;  // "fmt "
constexpr std::uint32_t kIdData = 0x61746164; // "data"

} // namespace

bool IsRf64File(const WideString& path)
{
    FileStream stream;
    char id[4] = {};
    return stream.OpenPlain(path, platform::kFileAttributeNormal) && stream.Read(id, 4) == 4 &&
           std::memcmp(id, "RF64", 4) == 0;
}

// The ds64 chunk, when it comes first as it must, gives the RF64 chunk's
// and the data chunk's 64-bit sizes; a size field of 0xFFFFFFFF defers to
// them.
bool ReadRf64Layout(const WideString& path, Rf64Layout& layout, std::string& problem)
{
    layout = Rf64Layout();
    FileStream stream;
    if (!stream.OpenPlain(path, platform::kFileAttributeNormal)) {
        problem = "the file can't be opened for reading";
        return false;
    }
    stream.EnableReadAhead(64 * 1024);
    layout.fileSize = stream.GetSize();
    std::uint8_t header[12];
    if (stream.Read(header, 12) != 12 || std::memcmp(header, "RF64", 4) != 0) {
        problem = "not an RF64 file";
        return false;
    }
    layout.riffSize32 = U32(header + 4);
    layout.riffSize = layout.riffSize32;
    layout.formType = U32(header + 8);
    std::int64_t position = 12;
    while (position + 8 <= layout.fileSize && layout.chunks.size() < kMostRf64Chunks) {
        std::uint8_t chunkHeader[8];
        if (!stream.SeekTo(position) || stream.Read(chunkHeader, 8) != 8)
            break;
        Rf64Chunk chunk;
        chunk.id = U32(chunkHeader);
        chunk.position = position;
        chunk.size32 = U32(chunkHeader + 4);
        chunk.size = chunk.size32;
        if (chunk.id == kIdDs64 && position == 12 && chunk.size32 >= 24) {
            std::uint8_t sizes[24];
            if (stream.Read(sizes, 24) == 24) {
                layout.hasDs64 = true;
                if (layout.riffSize32 == kRf64DefersSize)
                    layout.riffSize = U64(sizes);
                layout.ds64DataSize = U64(sizes + 8);
                layout.ds64SampleCount = U64(sizes + 16);
            }
        }
        if (chunk.id == kIdData && chunk.size32 == kRf64DefersSize && layout.hasDs64)
            chunk.size = layout.ds64DataSize;
        if (chunk.id == kIdFmt && layout.formatBytes == 0) {
            layout.formatBytes = chunk.size32 < 40 ? chunk.size32 : 40;
            if (stream.Read(layout.format, layout.formatBytes) != layout.formatBytes)
                layout.formatBytes = 0;
        }
        if (chunk.id == kIdData && layout.dataPosition < 0) {
            layout.dataPosition = position;
            layout.dataSize = chunk.size;
        }
        layout.chunks.push_back(chunk);
        position += 8 + chunk.size + chunk.size % 2;
    }
    return true;
}
