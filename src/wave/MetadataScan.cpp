#include "wave/MetadataScan.h"

#include "files/FileStream.h"
#include "wave/BodyBytes.h"
#include "wave/Rf64File.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr const char* kMetadataIds[] = {"bext", "cue ", "smpl", "acid", "cart", "iXML", "CSET"};

bool IsMetadataId(const std::string& id)
{
    return std::find_if(std::begin(kMetadataIds), std::end(kMetadataIds), [&](const char* known) { return id == known; }) !=
           std::end(kMetadataIds);
}

bool ReadAt(FileStream& stream, std::int64_t position, void* bytes, std::uint32_t count)
{
    return stream.SeekTo(position) && stream.Read(bytes, count) == count;
}

// The sizes an unfinished recording leaves in a data chunk.
bool IsPlaceholderSize(std::int64_t size)
{
    return size == 0 || size == 0xFFFFFFFF;
}

} // namespace

namespace {

// One walk of the top-level chunks, RIFF or RF64: each chunk goes through
// Take, which keeps what is metadata.
class ScanWalk {
public:
    ScanWalk(FileStream& stream, MetadataScan& scan) : stream(stream), scan(scan) {}

    // A chunk at position with the id and size it stands with, of which the
    // file holds held bytes of body. False when a read came short.
    bool Take(std::int64_t position, const std::string& id, std::int64_t size, std::int64_t held);

private:
    bool Keep(std::int64_t position, const std::string& id, const std::string& listType, std::int64_t size,
              std::int64_t held);

    FileStream& stream;
    MetadataScan& scan;
    bool dataSeen = false;
};

bool ScanWalk::Take(std::int64_t position, const std::string& id, std::int64_t size, std::int64_t held)
{
    // Of the lists, only INFO and adtl are metadata: the type is read
    // first, so that no other list's body is read.
    std::uint8_t type[4] = {};
    if (id == "LIST" && held >= 4 && !ReadAt(stream, position + 8, type, 4))
        return false;
    const std::string listType = BodyId(BodySpan(type, 4), 0);
    const bool list = id == "LIST" && held >= 4 && (listType == "INFO" || listType == "adtl");
    const bool metadata = IsMetadataId(id) || list;
    if (metadata && scan.chunks.size() >= kMostMetadataChunks)
        scan.cutShort = true;
    else if ((metadata || (id == "fmt " && scan.blockAlign == 0)) && !Keep(position, id, list ? listType : "", size, held))
        return false;
    if (id == "data" && !dataSeen) {
        dataSeen = true;
        if (!IsPlaceholderSize(size))
            scan.frameCount = held;
    }
    return true;
}

bool ScanWalk::Keep(std::int64_t position, const std::string& id, const std::string& listType, std::int64_t size,
                    std::int64_t held)
{
    const bool list = !listType.empty();
    MetadataChunk chunk{position, id, listType, static_cast<std::uint32_t>(std::min<std::int64_t>(size, 0xFFFFFFFF)), {},
                        dataSeen};
    const std::int64_t start = position + 8 + (list ? 4 : 0);
    const std::int64_t body = held - (list ? 4 : 0);
    const std::int64_t room = std::int64_t{kMostMetadataBytesInAll} - static_cast<std::int64_t>(scan.bodyBytes);
    const std::int64_t kept = std::min<std::int64_t>({body, kMostMetadataBytes, std::max<std::int64_t>(room, 40)});
    scan.cutShort = scan.cutShort || kept < std::min<std::int64_t>(body, kMostMetadataBytes);
    scan.bodyBytes += static_cast<std::uint64_t>(kept);
    chunk.body.resize(static_cast<std::size_t>(kept));
    if (!chunk.body.empty() && !ReadAt(stream, start, chunk.body.data(), static_cast<std::uint32_t>(chunk.body.size())))
        return false;
    if (id == "fmt ") {
        scan.sampleRate = BodyU32(chunk.body, 4);
        scan.blockAlign = BodyU16(chunk.body, 12);
    } else {
        if (id == "CSET" && !scan.codePage)
            scan.codePage = BodyU16(chunk.body, 0);
        scan.chunks.push_back(std::move(chunk));
    }
    return true;
}

// The chunks of an RF64 file, as its one reading of ds64 found them: sizes
// that defer to ds64 stand for the 64-bit ones there.
MetadataScanResult ScanRf64(FileStream& stream, std::int64_t fileSize, ScanWalk& walk, MetadataScan& scan)
{
    Rf64Layout layout;
    if (!ReadRf64Layout(stream, layout, scan.problem))
        return MetadataScanResult::NotRiff;
    for (const Rf64Chunk& chunk : layout.chunks) {
        const std::uint8_t id[4] = {static_cast<std::uint8_t>(chunk.id), static_cast<std::uint8_t>(chunk.id >> 8),
                                    static_cast<std::uint8_t>(chunk.id >> 16), static_cast<std::uint8_t>(chunk.id >> 24)};
        const std::int64_t held = std::min(chunk.size, std::max<std::int64_t>(0, fileSize - chunk.position - 8));
        if (!walk.Take(chunk.position, BodyId(BodySpan(id, 4), 0), chunk.size, held))
            return MetadataScanResult::ReadFailed;
    }
    return MetadataScanResult::Scanned;
}

} // namespace

// A chunk whose size runs past the RIFF chunk ends the walk, with what the
// file holds of it read.
MetadataScanResult ScanMetadata(FileStream& stream, std::int64_t fileSize, MetadataScan& scan)
{
    std::uint8_t header[12];
    if (fileSize < 12)
        return MetadataScanResult::NotRiff;
    if (!ReadAt(stream, 0, header, 12))
        return MetadataScanResult::ReadFailed;
    ScanWalk walk(stream, scan);
    if (std::memcmp(header, "RF64", 4) == 0 && std::memcmp(header + 8, "WAVE", 4) == 0) {
        const MetadataScanResult result = ScanRf64(stream, fileSize, walk, scan);
        if (result != MetadataScanResult::Scanned)
            return result;
    } else if (std::memcmp(header, "RIFF", 4) != 0 || std::memcmp(header + 8, "WAVE", 4) != 0) {
        return MetadataScanResult::NotRiff;
    } else {
        const std::uint32_t riffSize = BodyU32(BodySpan(header, 12), 4);
        const std::int64_t riffEnd =
            IsPlaceholderSize(riffSize) ? fileSize : std::min(fileSize, 8 + std::int64_t{riffSize});
        for (std::int64_t position = 12; position + 8 <= riffEnd;) {
            if (!ReadAt(stream, position, header, 8))
                return MetadataScanResult::ReadFailed;
            const BodySpan head(header, 8);
            const std::uint32_t size = BodyU32(head, 4);
            const std::int64_t held = std::min<std::int64_t>(size, riffEnd - position - 8);
            if (!walk.Take(position, BodyId(head, 0), size, held))
                return MetadataScanResult::ReadFailed;
            if (held < size)
                break;
            position += 8 + std::int64_t{size} + size % 2;
        }
    }
    // The frames are counted once the walk is done, as the format chunk may
    // come behind the data.
    if (scan.frameCount)
        scan.frameCount = scan.blockAlign ? *scan.frameCount / scan.blockAlign : 0;
    return MetadataScanResult::Scanned;
}
