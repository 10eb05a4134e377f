#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

// How the samples of a file's audio lie and what they are worth: the kinds
// the meters take, the format read from a format chunk's body, a sample's
// value, and the decoding of frames to floats. Plain functions, for any
// thread.

enum class SampleKind { Unsigned8, Signed16, Signed24, Signed32, Float32, Float64 };

struct SampleFormat {
    SampleKind kind = SampleKind::Signed16;
    std::uint16_t channels = 0;
    std::uint32_t sampleRate = 0;
    std::uint16_t bits = 0;           // bits of a sample's container
    std::uint32_t bytesPerSample = 0;
    std::uint32_t stride = 0;         // bytes a frame (the block align), room to spare included
    std::uint32_t channelMask = 0;    // an extensible format's speakers; 0 when there is none

    bool IsFloat() const { return kind == SampleKind::Float32 || kind == SampleKind::Float64; }
    // Frames whose samples lie side by side, with no room between frames.
    bool IsPacked() const { return stride == bytesPerSample * channels; }
};

// The samples of a format chunk's body (its first 40 bytes, or fewer):
// 8, 16, 24 and 32-bit PCM and 32 and 64-bit float, plain or extensible,
// with at least one channel and a frame that holds them. False with the
// reason in problem for anything else.
bool ReadSampleFormat(const std::uint8_t* body, std::uint32_t length, SampleFormat& format, std::string& problem);

// A sample of this width: 8-bit samples are unsigned around 128, the wider
// ones signed.
template <int Bytes>
std::int32_t SampleAt(const std::uint8_t* bytes)
{
    if constexpr (Bytes == 1)
        return static_cast<std::int32_t>(bytes[0]) - 128;
    else if constexpr (Bytes == 2)
        return static_cast<std::int16_t>(bytes[0] | bytes[1] << 8);
    else if constexpr (Bytes == 3)
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(bytes[0] << 8 | bytes[1] << 16 | bytes[2] << 24)) >> 8;
    else
        return static_cast<std::int32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16 |
                                         static_cast<std::uint32_t>(bytes[3]) << 24);
}

template <typename Float>
Float FloatAt(const std::uint8_t* bytes)
{
    Float value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// The largest float magnitude that is measured. NaN, the infinities and
// anything beyond this are no level a recording has, but a corrupt word:
// they are counted apart and every meter takes silence in their place. Up
// to 2^60 (+361 dBFS) a sample's square summed over 2^63 frames stays far
// inside a double, and the true-peak filter's squares inside a float.
constexpr double kLargestSample = 1152921504606846976.0;

// A float sample as the meters take it, and whether it was one to take.
// NaN fails the comparison, so one comparison sorts out all three kinds.
inline double Measurable(double v, bool& kept)
{
    kept = std::fabs(v) <= kLargestSample;
    return kept ? v : 0.0;
}

// Frames of any kind as floats at full scale ±1.0, interleaved as they
// came, into out (room for frames × channels); samples that are no level
// become silence.
void DecodeFloats(const SampleFormat& format, const std::uint8_t* data, std::uint32_t frames, float* out);
