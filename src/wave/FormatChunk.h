#pragma once

#include "wave/Chunk.h"

#include <cstdint>

// The 18-byte record of a format body, laid out as on disk.
struct WaveFormat {
    std::uint16_t formatTag = 0;
    std::uint16_t channels = 0;
    std::uint32_t samplesPerSec = 0;
    std::uint32_t avgBytesPerSec = 0;
    std::uint16_t blockAlign = 0;
    std::uint16_t bitsPerSample = 0;
    std::uint16_t extraSize = 0;

    static constexpr std::uint32_t kRecordBytes = 18;
    // The record from its bytes; fewer than 18 leave the rest zero.
    static WaveFormat FromBytes(const std::uint8_t* bytes, std::uint32_t count);
    void ToBytes(std::uint8_t (&record)[kRecordBytes]) const;
};

constexpr std::uint16_t kFormatTagPcm = 1;
constexpr std::uint16_t kFormatTagFloat = 3;
constexpr std::uint16_t kFormatTagAlaw = 6;
constexpr std::uint16_t kFormatTagMulaw = 7;
constexpr std::uint16_t kFormatTagExtensible = 0xFFFE;
// The sub-format of an extensible format is a GUID whose first two bytes
// hold a format tag and whose other fourteen are these.
inline constexpr std::uint8_t kSubFormatTail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                    0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

// The "fmt " chunk.
class FormatChunk : public Chunk {
public:
    explicit FormatChunk(WaveDocument& document);
    ~FormatChunk() override;

    bool Read(std::uint32_t id) override;
    // Format=PCM, and the decimal numbers Ch, Bit and Freq; the block
    // alignment and byte rate follow from those of a PCM format.
    bool SetAttribute(const WideString& name, const WideString& value) override;
    // Always the 18 bytes of the record, whatever the source held behind it.
    bool Write(FileStream& target) override;
    bool IsWrittenAsRead() const override { return false; }

    WaveFormat GetFormat() const;
    bool IsPcm() const;

private:
    void UpdateDerivedFields();

    WaveFormat format;
};
