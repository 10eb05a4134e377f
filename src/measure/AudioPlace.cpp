#include "measure/AudioPlace.h"

#include "files/FileStream.h"
#include "wave/DataChunk.h"
#include "wave/FileLayout.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"

#include <algorithm>
#include <cstring>

namespace {

bool FindRf64Audio(const FileLayout& file, AudioPlace& place, std::string& problem)
{
    if (!file.HasRf64Layout()) {
        problem = "not a RIFF file";
        return false;
    }
    const Rf64Layout& layout = file.GetRf64Layout();
    if (layout.formatBytes == 0) {
        problem = "no format chunk";
        return false;
    }
    std::memcpy(place.format, layout.format, layout.formatBytes);
    place.formatBytes = layout.formatBytes;
    place.dataPosition = layout.dataPosition;
    place.dataBytes = layout.dataSize;
    const std::uint16_t blockAlign = ReadLittleEndian16(layout.format + 12);
    const std::int64_t present = std::min(layout.dataSize, layout.fileSize - (layout.dataPosition + 8));
    place.frameCount = blockAlign ? std::max<std::int64_t>(0, present) / blockAlign : 0;
    return true;
}

} // namespace

bool FindAudio(FileLayout& layout, AudioPlace& place, std::string& problem)
{
    if (layout.GetContainer() != FileContainer::Riff)
        return FindRf64Audio(layout, place, problem);
    WaveDocument& document = layout.GetDocument();
    const FormatChunk* formatChunk = document.GetFormatChunk();
    if (!formatChunk) {
        problem = "no format chunk";
        return false;
    }
    const DataChunk* dataChunk = document.GetDataChunk();
    // The record as the reader holds it, and the rest of the body from the
    // file for an extensible format's sub-format.
    const WaveFormat format = formatChunk->GetFormat();
    const std::uint16_t fields[] = {format.formatTag, format.channels};
    std::memcpy(place.format, fields, 4);
    const std::uint32_t rates[] = {format.samplesPerSec, format.avgBytesPerSec};
    std::memcpy(place.format + 4, rates, 8);
    const std::uint16_t frame[] = {format.blockAlign, format.bitsPerSample};
    std::memcpy(place.format + 12, frame, 4);
    place.formatBytes = 16;
    if (format.formatTag == kFormatTagExtensible && formatChunk->GetSize() >= 40) {
        StreamGuard guard;
        FileStream& stream = document.AcquireStream(guard);
        if (stream.SeekTo(formatChunk->GetPosition() + 8 + 16) && stream.Read(place.format + 16, 24) == 24)
            place.formatBytes = 40;
    }
    if (dataChunk)
        place.dataBytes = std::max<std::int64_t>(0, dataChunk->GetSize());
    if (dataChunk && format.blockAlign > 0) {
        place.dataPosition = dataChunk->GetPosition();
        const std::int64_t present = layout.GetFileSize() - (place.dataPosition + 8);
        place.frameCount = std::max<std::int64_t>(0, std::min(dataChunk->GetFrameCount(), present / format.blockAlign));
    } else if (dataChunk) {
        place.dataPosition = dataChunk->GetPosition();
    }
    return true;
}
