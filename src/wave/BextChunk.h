#pragma once

#include "wave/Chunk.h"

#include <array>
#include <cstdint>

// The broadcast extension chunk, kept as its raw record of 858 bytes.
class BextChunk : public Chunk {
public:
    static constexpr std::uint32_t kRecordBytes = 858;

    explicit BextChunk(WaveDocument& document);
    ~BextChunk() override;

    bool Read(std::uint32_t id) override;

    const std::array<std::uint8_t, kRecordBytes>& GetRecord() const { return record; }

private:
    std::array<std::uint8_t, kRecordBytes> record{};
};
