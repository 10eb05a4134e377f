#include "wave/FormatChunk.h"

#include "files/FileStream.h"
#include "layouttext/ValueSyntax.h"
#include "wave/ChunkWriteGuard.h"
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

void WaveFormat::ToBytes(std::uint8_t (&record)[kRecordBytes]) const
{
    WriteLittleEndian16(record, formatTag);
    WriteLittleEndian16(record + 2, channels);
    WriteLittleEndian32(record + 4, samplesPerSec);
    WriteLittleEndian32(record + 8, avgBytesPerSec);
    WriteLittleEndian16(record + 12, blockAlign);
    WriteLittleEndian16(record + 14, bitsPerSample);
    WriteLittleEndian16(record + 16, extraSize);
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

// Format=PCM acts in any document and recomputes nothing. The numbers act
// only in a RIFF document, and only a change recomputes.
bool FormatChunk::SetAttribute(const WideString& name, const WideString& value)
{
    const std::u16string_view key = name.View();
    if (key == u"Format") {
        if (value.View() != u"PCM")
            return false;
        const bool changed = format.formatTag != kFormatTagPcm;
        format.formatTag = kFormatTagPcm;
        return changed;
    }
    if (key != u"Ch" && key != u"Bit" && key != u"Freq")
        return false;
    if (document->GetContainerKind() != kContainerRiff)
        return false;
    const auto number = static_cast<std::uint32_t>(ScanDecimalInt(value.View()));
    if (key == u"Freq") {
        if (format.samplesPerSec == number)
            return false;
        format.samplesPerSec = number;
    } else {
        std::uint16_t& field = key == u"Ch" ? format.channels : format.bitsPerSample;
        if (field == static_cast<std::uint16_t>(number))
            return false;
        field = static_cast<std::uint16_t>(number);
    }
    UpdateDerivedFields();
    return true;
}

void FormatChunk::UpdateDerivedFields()
{
    if (!IsPcm())
        return;
    const std::uint32_t product = std::uint32_t{format.channels} * format.bitsPerSample;
    format.blockAlign = static_cast<std::uint16_t>((product + 7) / 8);
    format.avgBytesPerSec = std::uint32_t{format.blockAlign} * format.samplesPerSec;
}

bool FormatChunk::Write(FileStream& target)
{
    if (document->GetContainerKind() != kContainerRiff)
        return false;
    ChunkWriteGuard header(target, kIdFormat);
    std::uint8_t record[WaveFormat::kRecordBytes];
    format.ToBytes(record);
    return target.Write(record, sizeof record) == sizeof record;
}
