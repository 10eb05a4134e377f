#pragma once

#include "files/FileStream.h"
#include "wave/Chunk.h"

#include <cstdint>

// The "data" chunk: its size, and the number of sample frames worked out
// once the whole file has been walked. It keeps two read streams of its own
// on the file.
class DataChunk : public Chunk {
public:
    explicit DataChunk(WaveDocument& document);
    ~DataChunk() override;

    bool Read(std::uint32_t id) override;

    std::int64_t GetFrameCount() const { return frameCount; }
    void UpdateFrameCount();
    void CloseStreams();

private:
    FileStream frameStream;
    std::int64_t frameCount = -1;
    FileStream spareStream;
};
