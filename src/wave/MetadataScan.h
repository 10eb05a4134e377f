#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class FileStream;

// The metadata chunks of a RIFF WAVE file, read straight from its bytes in
// file order, apart from the check's reader: INFO and adtl lists, bext,
// cue, smpl, acid, cart, iXML and CSET; beside them what the format and
// data chunks say of the audio's frames. Made on the reading thread.
struct MetadataChunk {
    std::int64_t offset;
    std::string id;
    std::string listType;  // a LIST's type, "INFO" or "adtl"
    std::uint32_t declaredSize;
    // The body as the file holds it, within the limits; a LIST's
    // from behind its type.
    std::vector<std::uint8_t> body;
    bool afterData;
};

// What one scan keeps at most, so that a hostile file of many or large
// metadata chunks costs bounded memory: the bytes of one body, of all
// bodies, and the chunks.
constexpr std::uint32_t kMostMetadataBytes = 4 << 20;
constexpr std::uint32_t kMostMetadataBytesInAll = 16 << 20;
constexpr std::size_t kMostMetadataChunks = 4096;

struct MetadataScan {
    std::vector<MetadataChunk> chunks;
    // Of the first format chunk; 0 when there is none.
    std::uint32_t sampleRate = 0;
    std::uint16_t blockAlign = 0;
    // The frames of the first data chunk, as much of it as the file holds;
    // nothing without one, or when its size is a placeholder.
    std::optional<std::int64_t> frameCount;
    // The code page of the first CSET chunk.
    std::optional<std::uint16_t> codePage;
    // Metadata chunks beyond the limits were left out.
    bool cutShort = false;
    // Why an RF64 file's chunks can't be told (its ds64 sizes), when so.
    std::string problem;
    std::uint64_t bodyBytes = 0;
};

enum class MetadataScanResult { Scanned, NotRiff, ReadFailed };

// Walks the top-level chunks of the RIFF or RF64 chunk of the file that stream has
// open, fileSize bytes long, wherever the stream stands. ReadFailed when a
// read the file's size promised came short.
MetadataScanResult ScanMetadata(FileStream& stream, std::int64_t fileSize, MetadataScan& scan);
