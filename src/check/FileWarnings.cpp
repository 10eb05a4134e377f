#include "check/FileWarnings.h"

#include "base/TextFormat.h"
#include "files/FileStream.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

// The sizes that writers put in a header before they know the length, and
// leave there when they can't go back to it (writing to a pipe, a crash):
// all ones, or the largest run of whole 4 KiB pages below 2 GiB.
constexpr std::uint32_t kPlaceholderSize = 0xFFFFFFFF;
constexpr std::uint32_t kPagedPlaceholderSize = 0x7FFFF000;

// Four bytes that may begin a chunk: printable ASCII, as every chunk id
// that writers use is.
bool LooksLikeId(const std::uint8_t* bytes)
{
    for (int i = 0; i < 4; ++i) {
        if (bytes[i] < 0x20 || bytes[i] > 0x7E)
            return false;
    }
    return true;
}

class Scan {
public:
    Scan(FileStream& stream, std::int64_t fileSize, std::vector<Finding>& warnings)
        : stream(stream), fileSize(fileSize), warnings(warnings)
    {
    }

    bool ReadAt(std::int64_t position, void* bytes, std::uint32_t count)
    {
        return position >= 0 && position + count <= fileSize && stream.SeekTo(position) &&
               stream.Read(bytes, count) == count;
    }

    void Warn(const char* code, std::optional<std::int64_t> offset, const std::string& chunk,
              std::optional<std::int64_t> declared, std::optional<std::int64_t> actual)
    {
        warnings.push_back(MakeFinding(*FindFindingKind(code), offset, chunk, declared, actual));
    }

    void CheckFormat(std::int64_t offset, const std::uint8_t* body, std::uint32_t length)
    {
        if (length < 16)
            return;
        const std::uint16_t tag = ReadLittleEndian16(body);
        const std::uint16_t channels = ReadLittleEndian16(body + 2);
        const std::uint32_t rate = ReadLittleEndian32(body + 4);
        const std::uint32_t byteRate = ReadLittleEndian32(body + 8);
        const std::uint16_t blockAlign = ReadLittleEndian16(body + 12);
        const std::uint16_t bits = ReadLittleEndian16(body + 14);
        std::uint16_t sampleTag = tag;
        if (tag == kFormatTagExtensible) {
            // An extensible format without its sub-format says nothing
            // more; the check takes any extensible format for PCM.
            if (length < 40)
                return;
            const bool standard = std::memcmp(body + 26, kSubFormatTail, sizeof kSubFormatTail) == 0;
            sampleTag = standard ? ReadLittleEndian16(body + 24) : 0;
            if (sampleTag != kFormatTagPcm)
                Warn("format.extensible-not-pcm", offset, "fmt ", std::nullopt, std::nullopt);
        }
        // Only formats of whole samples have one right block align; a
        // compressed format sets its own.
        const bool wholeSamples =
            sampleTag == kFormatTagPcm || sampleTag == kFormatTagFloat || sampleTag == kFormatTagAlaw || sampleTag == kFormatTagMulaw;
        if (!wholeSamples || channels == 0 || bits == 0)
            return;
        // The check counts frames by the block align as declared, and so
        // do readers that trust it.
        frameBytes = blockAlign;
        const std::int64_t rightAlign = std::int64_t{channels} * ((bits + 7) / 8);
        if (blockAlign != rightAlign)
            Warn("format.block-align", offset, "fmt ", blockAlign, rightAlign);
        // The byte rate follows the block align as declared, so that one
        // wrong figure gives one warning.
        const std::int64_t rightRate = std::int64_t{rate} * blockAlign;
        if (byteRate != rightRate)
            Warn("format.byte-rate", offset, "fmt ", byteRate, rightRate);
    }

    // The chunks of the RIFF chunk from position to end, the end of the
    // RIFF chunk or of the file.
    void WalkChunks(std::int64_t position, std::int64_t end)
    {
        int formats = 0;
        std::uint8_t header[8];
        while (position + 8 <= end && ReadAt(position, header, 8)) {
            const std::string id = ChunkIdText(ReadLittleEndian32(header));
            const std::uint32_t size = ReadLittleEndian32(header + 4);
            const std::int64_t bodyEnd = position + 8 + size;
            if (id == "fmt ") {
                if (++formats == 1) {
                    std::uint8_t body[40] = {};
                    const std::uint32_t length = size < 40 ? size : 40;
                    if (ReadAt(position + 8, body, length))
                        CheckFormat(position, body, length);
                } else {
                    Warn("format.duplicate", position, "fmt ", std::nullopt, std::nullopt);
                }
            }
            if (id == "data") {
                const bool first = !dataSeen;
                dataSeen = true;
                // A data size of 0 with bytes behind it, or of 0xFFFFFFFF, is
                // what a recorder writes before it knows the length. What is
                // there runs to the end of the RIFF chunk when its size is
                // known, else to the end of the file.
                const std::int64_t present = end - (position + 8);
                const bool placeholder = size == kPlaceholderSize || (size == kPagedPlaceholderSize && bodyEnd > fileSize) ||
                                         (size == 0 && present > 0 && !NextIsChunk(position + 8, end));
                if (placeholder) {
                    if (first)
                        dataPlaceholderEnd = bodyEnd;
                    Warn("data.size-placeholder", position, "data", size, present);
                    return;
                }
                if (bodyEnd > fileSize) {
                    Warn("data.truncated", position, "data", size, fileSize - (position + 8));
                    return;
                }
                if (first)
                    wholeData = {position, size};
            }
            // A header and a 32-bit size always move the walk on; should a
            // step ever not, the walk ends rather than go round.
            if (bodyEnd > end || bodyEnd <= position)
                return;
            position = bodyEnd;
            if (size % 2 == 1) {
                // The pad byte is missing where the file ends right behind
                // the body, or where a chunk starts there and none a byte on.
                std::uint8_t next[5];
                const bool atEnd = position == fileSize;
                const bool chunkWithoutPad = !atEnd && position + 9 <= end && ReadAt(position, next, 5) &&
                                             LooksLikeId(next) && !LooksLikeId(next + 1);
                if (atEnd || chunkWithoutPad)
                    Warn("chunk.missing-pad", position - 8 - size, id, size, std::nullopt);
                if (!chunkWithoutPad)
                    position += 1;
            }
        }
    }

    bool NextIsChunk(std::int64_t position, std::int64_t end)
    {
        std::uint8_t next[8];
        return position + 8 <= end && ReadAt(position, next, 8) && LooksLikeId(next) &&
               position + 8 + ReadLittleEndian32(next + 4) <= end;
    }

    // A first data chunk whose size the file holds, against the frames of
    // the first format chunk: a size that ends inside a frame leaves readers
    // to guess at the last one. Known only once the walk is done, as the
    // format chunk may come behind the data.
    void CheckWholeFrames()
    {
        if (!wholeData || frameBytes == 0 || wholeData->size % frameBytes == 0)
            return;
        const std::int64_t frames = wholeData->size / frameBytes;
        const FindingFigure more[] = {{u"フレーム", "whole frames", frames},
                                      {u"余り", "bytes left over", wholeData->size % frameBytes}};
        warnings.push_back(MakeFinding(*FindFindingKind("data.partial-frame"), wholeData->position, "data",
                                       wholeData->size, frames * frameBytes, more));
    }

    // Where the data chunk ends by its placeholder size, when it has one.
    std::int64_t dataPlaceholderEnd = -1;

private:
    struct DataExtent {
        std::int64_t position;
        std::int64_t size;
    };

    FileStream& stream;
    std::int64_t fileSize;
    std::vector<Finding>& warnings;
    bool dataSeen = false;
    std::optional<DataExtent> wholeData;
    std::int64_t frameBytes = 0; // the block align of a format of whole samples
};

} // namespace

// Every warning is placed where the chunk it is about begins: the RIFF
// header, at 0, for what is wrong with the RIFF size or behind it.
void FindWarnings(FileStream& stream, std::int64_t fileSize, std::vector<Finding>& warnings)
{
    Scan scan(stream, fileSize, warnings);
    std::uint8_t header[12];
    if (!scan.ReadAt(0, header, 12))
        return;
    if (std::memcmp(header, "RF64", 4) == 0) {
        scan.Warn("container.rf64", 0, "RF64", std::nullopt, std::nullopt);
        return;
    }
    if (std::memcmp(header, "RIFF", 4) != 0)
        return;

    const std::uint32_t riffSize = ReadLittleEndian32(header + 4);
    const std::int64_t declaredEnd = 8 + std::int64_t{riffSize};
    const bool allOnesOrZero = riffSize == 0 || riffSize == kPlaceholderSize;
    const std::int64_t riffEnd = allOnesOrZero ? fileSize : std::min(fileSize, declaredEnd);
    std::vector<Finding> chunkWarnings;
    Scan chunks(stream, fileSize, chunkWarnings);
    if (std::memcmp(header + 8, "WAVE", 4) == 0)
        chunks.WalkChunks(12, riffEnd);
    chunks.CheckWholeFrames();

    // A RIFF size that ends where a placeholder data size ends is one too.
    const bool placeholder = allOnesOrZero || (chunks.dataPlaceholderEnd >= 0 && declaredEnd == chunks.dataPlaceholderEnd);
    const std::int64_t actualSize = fileSize - 8;
    if (placeholder) {
        scan.Warn("riff.size-placeholder", 0, "RIFF", riffSize, actualSize);
    } else if (declaredEnd > fileSize) {
        scan.Warn("riff.size-mismatch", 0, "RIFF", riffSize, actualSize);
    } else if (declaredEnd < fileSize && !(riffSize % 2 == 1 && declaredEnd + 1 == fileSize)) {
        // An odd RIFF chunk's pad byte behind it is no stray byte. The stray
        // bytes begin where the declared size ends.
        scan.Warn("riff.trailing-bytes", 0, "RIFF", riffSize, actualSize);
    }
    warnings.insert(warnings.end(), chunkWarnings.begin(), chunkWarnings.end());
}
