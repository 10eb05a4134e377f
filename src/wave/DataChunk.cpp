#include "wave/DataChunk.h"

#include "platform/File.h"
#include "wave/FormatChunk.h"
#include "wave/WaveDocument.h"

DataChunk::DataChunk(WaveDocument& document, bool aligned) : Chunk(document), aligned(aligned)
{
    document.RegisterDataChunk(this, true);
}

DataChunk::~DataChunk()
{
    document->RegisterDataChunk(this, false);
}

// Reads like any chunk, then opens the two streams of its own. A size of 0
// takes all the rest of the file: the walk ends here.
bool DataChunk::Read(std::uint32_t chunkId)
{
    if (!Chunk::Read(chunkId))
        return false;
    StreamGuard guard;
    FileStream& stream = document->AcquireStream(guard);
    const WideString path = stream.GetPath();
    if (!document->HasFrameStreams()) {
        readWithoutStreams = true;
    } else if (aligned) {
        if (!frameStream.OpenAligned(path, platform::kFileAttributeNormal) ||
            !spareStream.OpenAligned(path, platform::kFileAttributeNormal))
            return false;
    } else {
        constexpr std::uint32_t kFlags = platform::kFileAttributeNormal | platform::kFileFlagSequentialScan;
        if (!frameStream.OpenPlain(path, kFlags) || !spareStream.OpenPlain(path, kFlags))
            return false;
    }
    if (size == 0)
        stream.Seek(0, platform::SeekOrigin::End);
    return true;
}

// Frames from the declared size and the format's block alignment; -1
// without a usable format. When the declared size gives no frame, the real
// length of the file behind the chunk's header gives the count instead.
void DataChunk::UpdateFrameCount()
{
    const FormatChunk* formatChunk = document->GetFormatChunk();
    const std::int32_t kind = document->GetContainerKind();
    if (!formatChunk || kind != kContainerRiff || formatChunk->GetFormat().blockAlign == 0) {
        frameCount = -1;
        return;
    }
    const std::int64_t blockAlign = formatChunk->GetFormat().blockAlign;
    frameCount = size / blockAlign;
    if (frameCount > 0)
        return;
    if (frameStream.IsOpen()) {
        frameCount = (frameStream.GetSize() - (position + 8)) / blockAlign;
    } else if (readWithoutStreams) {
        StreamGuard guard;
        frameCount = (document->AcquireStream(guard).GetSize() - (position + 8)) / blockAlign;
    }
}

void DataChunk::CloseStreams()
{
    frameStream.Close();
    spareStream.Close();
}

bool DataChunk::Write(FileStream& target)
{
    const FormatChunk* formatChunk = document->GetFormatChunk();
    if (!formatChunk)
        return false;
    const WaveFormat format = formatChunk->GetFormat();
    if (format.channels < 1 || format.blockAlign < 1)
        return false;
    return Chunk::Write(target);
}

bool DataChunk::ReadFrames(FileStream& stream, FrameBlock& block, std::int64_t first, std::int32_t count)
{
    const FormatChunk* formatChunk = document->GetFormatChunk();
    const WaveFormat format = formatChunk ? formatChunk->GetFormat() : WaveFormat();
    if (format.channels < 1 || format.blockAlign < 1)
        return false;
    std::int64_t frames = count;
    if (first + frames <= 0)
        return false;
    if (first < 0) {
        frames += first;
        first = 0;
    }
    if (frames < 0)
        frames = 1024;
    if (first + frames > frameCount)
        frames = frameCount - first;
    if (frames <= 0 || frames > FrameBlock::kMostFrames)
        return false;
    if (!block.Prepare(static_cast<std::uint32_t>(frames), format.channels, format.blockAlign))
        return false;
    if (!stream.SeekTo(format.blockAlign * first + position + 8))
        return false;
    const std::uint32_t got = stream.Read(block.Data(), block.Length());
    block.Cut(got);
    return got != 0;
}
