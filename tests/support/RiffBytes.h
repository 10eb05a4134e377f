#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Builds the bytes of a RIFF file in memory: chunks with an id, a size that
// may lie, a body and an optional pad byte.
class RiffBytes {
public:
    // Raw bytes, as they stand.
    RiffBytes& Raw(std::string_view bytes);
    RiffBytes& U16(std::uint16_t value);
    RiffBytes& U32(std::uint32_t value);
    RiffBytes& U64(std::uint64_t value);
    RiffBytes& Id(std::string_view fourcc);

    // id, size of the body, body, and a pad byte when the body is odd.
    RiffBytes& Chunk(std::string_view fourcc, std::string_view body);
    // The same without the pad byte.
    RiffBytes& ChunkNoPad(std::string_view fourcc, std::string_view body);
    // A chunk whose size field says declaredSize, whatever the body is.
    RiffBytes& ChunkWithSize(std::string_view fourcc, std::uint32_t declaredSize, std::string_view body);
    // The head of a RIFF or LIST chunk, whatever follows: id, a size field
    // that says declaredSize, and the form or list type.
    RiffBytes& Head(std::string_view fourcc, std::uint32_t declaredSize, std::string_view type = "WAVE");

    const std::string& Bytes() const { return bytes; }
    std::size_t Size() const { return bytes.size(); }

private:
    std::string bytes;
};

// A 16-byte PCM format body.
std::string FormatBody(std::uint16_t tag, std::uint16_t channels, std::uint32_t samplesPerSec,
                       std::uint16_t bitsPerSample);
// The same with an explicit block alignment.
std::string FormatBodyAligned(std::uint16_t tag, std::uint16_t channels, std::uint32_t samplesPerSec,
                              std::uint16_t bitsPerSample, std::uint16_t blockAlign);
// RIFF header with the size worked out from the children, form type WAVE.
std::string Riff(std::string_view children, std::string_view formType = "WAVE");
// A "fmt " chunk and a "data" chunk of these bodies, padded when odd.
std::string FmtBytes(std::string_view body);
std::string DataBytes(std::string_view body);
// A LIST chunk of this type, with the size worked out from the body.
std::string ListBytes(std::string_view type, std::string_view body);
// A WAVE file of a format chunk and a data chunk.
std::string Wave(std::string_view formatBody, std::string_view audio);
// A sound PCM file: 16 bits, 44100 Hz, stereo, frames of silence.
std::string SoundWave(std::uint32_t frames = 4);
// A float WAVE file of these interleaved samples, 32 or 64-bit.
std::string FloatWave(const std::vector<float>& samples, std::uint16_t channels, std::uint32_t rate);
std::string FloatWave(const std::vector<double>& samples, std::uint16_t channels, std::uint32_t rate);
