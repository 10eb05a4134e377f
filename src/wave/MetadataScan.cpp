#include "wave/MetadataScan.h"

#include "files/FileStream.h"
#include "wave/BodyBytes.h"

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
bool IsPlaceholderSize(std::uint32_t size)
{
    return size == 0 || size == 0xFFFFFFFF;
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
    if (std::memcmp(header, "RIFF", 4) != 0 || std::memcmp(header + 8, "WAVE", 4) != 0)
        return MetadataScanResult::NotRiff;
    const std::uint32_t riffSize = BodyU32(BodySpan(header, 12), 4);
    const std::int64_t riffEnd = riffSize == 0 || riffSize == 0xFFFFFFFF ? fileSize : std::min(fileSize, 8 + std::int64_t{riffSize});
    bool dataSeen = false;
    for (std::int64_t position = 12; position + 8 <= riffEnd;) {
        if (!ReadAt(stream, position, header, 8))
            return MetadataScanResult::ReadFailed;
        const BodySpan head(header, 8);
        const std::string id = BodyId(head, 0);
        const std::uint32_t size = BodyU32(head, 4);
        const std::int64_t held = std::min<std::int64_t>(size, riffEnd - position - 8);
        // Of the lists, only INFO and adtl are metadata: the type is read
        // first, so that no other list's body is read.
        std::uint8_t type[4] = {};
        if (id == "LIST" && held >= 4 && !ReadAt(stream, position + 8, type, 4))
            return MetadataScanResult::ReadFailed;
        const std::string listType = BodyId(BodySpan(type, 4), 0);
        const bool list = id == "LIST" && held >= 4 && (listType == "INFO" || listType == "adtl");
        const bool metadata = IsMetadataId(id) || list;
        if (metadata && scan.chunks.size() >= kMostMetadataChunks) {
            scan.cutShort = true;
        } else if (metadata || (id == "fmt " && scan.blockAlign == 0)) {
            MetadataChunk chunk{position, id, list ? listType : "", size, {}, dataSeen};
            const std::int64_t start = position + 8 + (list ? 4 : 0);
            const std::int64_t body = held - (list ? 4 : 0);
            const std::int64_t room = std::int64_t{kMostMetadataBytesInAll} - static_cast<std::int64_t>(scan.bodyBytes);
            const std::int64_t kept = std::min<std::int64_t>({body, kMostMetadataBytes, std::max<std::int64_t>(room, 40)});
            scan.cutShort = scan.cutShort || kept < std::min<std::int64_t>(body, kMostMetadataBytes);
            scan.bodyBytes += static_cast<std::uint64_t>(kept);
            chunk.body.resize(static_cast<std::size_t>(kept));
            if (!chunk.body.empty() && !ReadAt(stream, start, chunk.body.data(), static_cast<std::uint32_t>(chunk.body.size())))
                return MetadataScanResult::ReadFailed;
            if (id == "fmt ") {
                scan.sampleRate = BodyU32(chunk.body, 4);
                scan.blockAlign = BodyU16(chunk.body, 12);
            } else {
                if (id == "CSET" && !scan.codePage)
                    scan.codePage = BodyU16(chunk.body, 0);
                scan.chunks.push_back(std::move(chunk));
            }
        }
        if (id == "data" && !dataSeen) {
            dataSeen = true;
            if (!IsPlaceholderSize(size))
                scan.frameCount = held;
        }
        if (held < size)
            break;
        position += 8 + std::int64_t{size} + size % 2;
    }
    // The frames are counted once the walk is done, as the format chunk may
    // come behind the data.
    if (scan.frameCount)
        scan.frameCount = scan.blockAlign ? *scan.frameCount / scan.blockAlign : 0;
    return MetadataScanResult::Scanned;
}
