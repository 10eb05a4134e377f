#include "wave/FormatChunk.h"

#include "wave/FourCc.h"
#include "wave/WaveDocument.h"

#include <algorithm>
#include <cstring>

WaveFormat WaveFormat::FromBytes(const std::uint8_t* bytes, std::uint32_t count)
{
    std::uint8_t record[kRecordBytes] = {};
    std::memcpy(record, bytes, std::min(count, kRecordBytes));
    WaveFormat format;
    format.formatTag = ReadLittleEndian16(record);
    format.channels = ReadLittleEndian16(record + 2);
    format.samplesPerSec = ReadLittleEndian32(record + 4);
    format.avgBytesPerSec = ReadLittleEndian32(record + 8);
    format.blockAlign = ReadLittleEndian16(record + 12);
    format.bitsPerSample = ReadLittleEndian16(record + 14);
    format.extraSize = ReadLittleEndian16(record + 16);
    return format;
}

FormatChunk::FormatChunk(WaveDocument& document) : Chunk(document)
{
    document.RegisterFormatChunk(this, true);
}

FormatChunk::~FormatChunk()
{
    document->RegisterFormatChunk(this, false);
}

// The record takes the first 18 bytes of the body; a body of 1024 bytes and
// more is never read in and leaves it all zero.
bool FormatChunk::Read(std::uint32_t chunkId)
{
    if (!Chunk::Read(chunkId))
        return false;
    if (document->GetContainerKind() == kContainerRiff && body.Size() > 0)
        format = WaveFormat::FromBytes(body.Data(), body.Size());
    return true;
}

// The record, or an all-zero one outside a RIFF file.
WaveFormat FormatChunk::GetFormat() const
{
    return document->GetContainerKind() == kContainerRiff ? format : WaveFormat();
}

bool FormatChunk::IsPcm() const
{
    return document->GetContainerKind() == kContainerRiff &&
           (format.formatTag == kFormatTagPcm || format.formatTag == kFormatTagExtensible);
}
