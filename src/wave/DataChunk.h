#pragma once

#include "files/FileStream.h"
#include "wave/Chunk.h"
#include "wave/FrameBlock.h"

#include <cstdint>

// The "data" chunk: its size, and the number of sample frames worked out
// once the whole file has been walked. It keeps two read streams of its own
// on the file, aligned when the document reads in aligned mode, and hands
// out its samples by frame number; a document without frame streams reads
// none, and only the frame count is known.
class DataChunk : public Chunk, public FrameSource {
public:
    DataChunk(WaveDocument& document, bool aligned);
    ~DataChunk() override;

    bool Read(std::uint32_t id) override;
    // Needs a usable format in the document; the body is copied as it is.
    bool Write(FileStream& target) override;
    bool IsWrittenAsRead() const override { return false; }

    // Frames from first (negative counts from frame 0 on, shortening the
    // range), count of them (a negative count asks for 1024), cut at the
    // last frame. Needs UpdateFrameCount to have run.
    bool ReadFrames(FileStream& stream, FrameBlock& block, std::int64_t first, std::int32_t count) override;

    std::int64_t GetFrameCount() const { return frameCount; }
    void UpdateFrameCount();
    void CloseStreams();
    FileStream& GetFrameStream() { return frameStream; }

private:
    FileStream frameStream;
    std::int64_t frameCount = -1;
    FileStream spareStream;
    bool aligned;
    // Read well by a document without frame streams: the length of its
    // stream stands in for the frame stream's.
    bool readWithoutStreams = false;
};
