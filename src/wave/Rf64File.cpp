#include "wave/Rf64File.h"

#include "base/TextFormat.h"
#include "files/FileStream.h"
#include "wave/FourCc.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

// A count marked in thousands as FormatCount marks one, over the whole
// range of a 64-bit size.
std::string SizeText(std::uint64_t value)
{
    if (value < 1000)
        return FormatCount(static_cast<std::int64_t>(value));
    return FormatCount(static_cast<std::int64_t>(value / 1000)) + "," + std::to_string(1000 + value % 1000).substr(1);
}

// A ds64 size can be meant when what it sizes, with its header and pad
// byte, would end at a position a file can have, wherever in the file it
// begins. A recording cut short leaves sizes past the end of the file,
// never beyond that; a larger one would send a walk round past the
// largest position, or, read as a signed number, back to where it stands.
bool CanBeMeant(std::uint64_t size, std::int64_t fileSize)
{
    const auto room = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() - std::max<std::int64_t>(fileSize, 0));
    return room >= 9 && size <= room - 9;
}

bool RefuseSize(const char* which, std::uint64_t size, std::string& problem)
{
    problem = std::string("the ds64 ") + which + " size, " + SizeText(size) + " bytes, is more than a file can hold";
    return false;
}

constexpr std::uint32_t kIdDs64 = MakeFourCc("ds64");

} // namespace

bool BeginsAsRf64(FileStream& stream)
{
    char id[4] = {};
    return stream.SeekTo(0) && stream.Read(id, 4) == 4 && std::memcmp(id, "RF64", 4) == 0;
}

bool ReadRf64Layout(const WideString& path, Rf64Layout& layout, std::string& problem)
{
    layout = Rf64Layout();
    FileStream stream;
    if (!stream.OpenPlain(path, platform::kFileAttributeNormal)) {
        problem = "the file can't be opened for reading";
        return false;
    }
    stream.EnableReadAhead(64 * 1024);
    return ReadRf64Layout(stream, layout, problem);
}

// The ds64 chunk, when it comes first as it must, gives the RF64 chunk's
// and the data chunk's 64-bit sizes; a size field of 0xFFFFFFFF defers to
// them. They are read unsigned, and refused where they are taken when no
// file can hold them; a size nothing defers to stays as it stands.
bool ReadRf64Layout(FileStream& stream, Rf64Layout& layout, std::string& problem)
{
    layout = Rf64Layout();
    layout.fileSize = stream.GetSize();
    std::uint8_t header[12];
    if (!stream.SeekTo(0) || stream.Read(header, 12) != 12 || std::memcmp(header, "RF64", 4) != 0) {
        problem = "not an RF64 file";
        return false;
    }
    layout.riffSize32 = ReadLittleEndian32(header + 4);
    layout.riffSize = layout.riffSize32;
    layout.formType = ReadLittleEndian32(header + 8);
    std::int64_t position = 12;
    while (position + 8 <= layout.fileSize && layout.chunks.size() < kMostRf64Chunks) {
        std::uint8_t chunkHeader[8];
        if (!stream.SeekTo(position) || stream.Read(chunkHeader, 8) != 8)
            break;
        Rf64Chunk chunk;
        chunk.id = ReadLittleEndian32(chunkHeader);
        chunk.position = position;
        chunk.size32 = ReadLittleEndian32(chunkHeader + 4);
        chunk.size = chunk.size32;
        if (chunk.id == kIdDs64 && position == 12 && chunk.size32 >= 24) {
            std::uint8_t sizes[24];
            if (stream.Read(sizes, 24) == 24) {
                const std::uint64_t riffSize = ReadLittleEndian64(sizes);
                if (layout.riffSize32 == kRf64DefersSize) {
                    if (!CanBeMeant(riffSize, layout.fileSize))
                        return RefuseSize("RIFF", riffSize, problem);
                    layout.riffSize = static_cast<std::int64_t>(riffSize);
                }
                layout.hasDs64 = true;
                layout.ds64Size = chunk.size32;
                layout.ds64DataSize = ReadLittleEndian64(sizes + 8);
                layout.ds64SampleCount = ReadLittleEndian64(sizes + 16);
            }
        }
        if (chunk.id == kIdData && chunk.size32 == kRf64DefersSize && layout.hasDs64 &&
            !Rf64DeferredDataSize(layout, chunk.size, problem))
            return false;
        if (chunk.id == kIdFormat && layout.formatBytes == 0) {
            layout.formatBytes = chunk.size32 < 40 ? chunk.size32 : 40;
            if (stream.Read(layout.format, layout.formatBytes) != layout.formatBytes)
                layout.formatBytes = 0;
        }
        if (chunk.id == kIdData && layout.dataPosition < 0) {
            layout.dataPosition = position;
            layout.dataSize = chunk.size;
        }
        layout.chunks.push_back(chunk);
        // Every size is one that can be meant, so each chunk moves the walk
        // on; should one ever not, the walk ends rather than go round.
        const std::int64_t next = position + 8 + chunk.size + chunk.size % 2;
        if (next <= position) {
            problem = "the chunk at " + FormatCount(position) + " leaves the walk where it stands";
            return false;
        }
        position = next;
    }
    return true;
}

// The tidy copy asks here too, for a data chunk behind the last one the
// layout keeps: both refuse the same sizes with the same words.
bool Rf64DeferredDataSize(const Rf64Layout& layout, std::int64_t& size, std::string& problem)
{
    if (!CanBeMeant(layout.ds64DataSize, layout.fileSize))
        return RefuseSize("data", layout.ds64DataSize, problem);
    size = static_cast<std::int64_t>(layout.ds64DataSize);
    return true;
}
