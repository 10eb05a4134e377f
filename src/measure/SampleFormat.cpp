#include "measure/SampleFormat.h"

#include "measure/CodeLanes.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"

#include <cstdio>
#include <type_traits>

namespace {

// A packed sample's width in bytes, as a type.
template <std::size_t Bytes>
using Width = std::integral_constant<std::size_t, Bytes>;

constexpr char kOnlyPcm[] = ": levels are measured for PCM (8, 16, 24 and 32-bit) and float (32 and 64-bit) only";

// The kind of a body's samples: its tag, or an extensible format's
// sub-format, with the container's bits.
bool KindOfSamples(const std::uint8_t* body, std::uint32_t length, SampleKind& kind, std::string& problem)
{
    if (length < 16) {
        problem = "a format chunk of " + std::to_string(length) + " bytes";
        return false;
    }
    std::uint16_t tag = ReadLittleEndian16(body);
    const std::uint16_t bits = ReadLittleEndian16(body + 14);
    if (tag == kFormatTagExtensible) {
        if (length < 40 || std::memcmp(body + 26, kSubFormatTail, sizeof kSubFormatTail) != 0) {
            problem = "an extensible format without a known sub-format" + std::string(kOnlyPcm);
            return false;
        }
        tag = ReadLittleEndian16(body + 24);
    }
    if (tag == kFormatTagPcm && (bits == 8 || bits == 16 || bits == 24 || bits == 32)) {
        kind = bits == 8 ? SampleKind::Unsigned8 : bits == 16 ? SampleKind::Signed16
             : bits == 24 ? SampleKind::Signed24 : SampleKind::Signed32;
        return true;
    }
    if (tag == kFormatTagFloat && (bits == 32 || bits == 64)) {
        kind = bits == 32 ? SampleKind::Float32 : SampleKind::Float64;
        return true;
    }
    char detail[96];
    if (tag == kFormatTagPcm || tag == kFormatTagFloat)
        std::snprintf(detail, sizeof detail, "%u-bit %s samples", static_cast<unsigned>(bits), tag == kFormatTagPcm ? "PCM" : "float");
    else
        std::snprintf(detail, sizeof detail, "format tag 0x%04X is not PCM", static_cast<unsigned>(tag));
    problem = detail + std::string(kOnlyPcm);
    return false;
}

} // namespace

bool ReadSampleFormat(const std::uint8_t* body, std::uint32_t length, SampleFormat& format, std::string& problem)
{
    format = SampleFormat();
    if (!KindOfSamples(body, length, format.kind, problem))
        return false;
    format.channels = ReadLittleEndian16(body + 2);
    format.sampleRate = ReadLittleEndian32(body + 4);
    format.stride = ReadLittleEndian16(body + 12);
    format.bits = ReadLittleEndian16(body + 14);
    format.bytesPerSample = format.bits / 8u;
    format.channelMask =
        length >= 24 && ReadLittleEndian16(body) == kFormatTagExtensible ? ReadLittleEndian32(body + 20) : 0;
    if (format.channels < 1) {
        problem = "no channels";
        return false;
    }
    if (format.stride < format.channels * format.bytesPerSample) {
        problem = "a frame of " + std::to_string(format.stride) + " bytes can't hold " +
                  std::to_string(format.channels) + " samples of " + std::to_string(format.bits) + " bits";
        return false;
    }
    return true;
}

// Packed frames (the usual case) are one run of samples in a row; frames
// with room to spare go channel by channel.
void DecodeFloats(const SampleFormat& format, const std::uint8_t* data, std::uint32_t frames, float* out)
{
    const std::uint32_t channels = format.channels, bytesPerSample = format.bytesPerSample;
    const bool packed = format.IsPacked();
    const std::uint32_t runs = packed ? 1 : channels;
    const std::size_t length = packed ? std::size_t{frames} * channels : frames;
    const std::size_t step = packed ? bytesPerSample : format.stride;
    const std::size_t outStep = packed ? 1 : channels;
    for (std::uint32_t c = 0; c < runs; ++c) {
        const std::uint8_t* from = data + c * bytesPerSample;
        float* target = out + c;
        // Packed samples lie a sample's width apart, a constant of each
        // kind: then the loop is one the compiler makes vector
        // instructions of.
        const auto convert = [&](auto valueAt, auto width) {
            if (packed) {
                std::size_t i = 0;
                // 16-bit codes in rows: the loads the compiler makes one
                // vector of.
                if constexpr (width() == 2) {
                    for (; i + kCodeLanes <= length; i += kCodeLanes) {
                        std::int16_t codes[kCodeLanes];
                        LoadCodes(from + i * 2, codes);
                        for (std::uint32_t l = 0; l < kCodeLanes; ++l)
                            target[i + l] = static_cast<float>(codes[l]) / 32768.0f;
                    }
                }
                for (; i < length; ++i)
                    target[i] = valueAt(from + i * width());
                return;
            }
            for (std::size_t i = 0; i < length; ++i)
                target[i * outStep] = valueAt(from + i * step);
        };
        switch (format.kind) {
        case SampleKind::Unsigned8:
            convert([](const std::uint8_t* p) { return static_cast<float>(SampleAt<1>(p)) / 128.0f; }, Width<1>{});
            break;
        case SampleKind::Signed16:
            convert([](const std::uint8_t* p) { return static_cast<float>(SampleAt<2>(p)) / 32768.0f; }, Width<2>{});
            break;
        case SampleKind::Signed24:
            convert([](const std::uint8_t* p) { return static_cast<float>(SampleAt<3>(p)) / 8388608.0f; }, Width<3>{});
            break;
        case SampleKind::Signed32:
            convert([](const std::uint8_t* p) {
                return static_cast<float>(static_cast<double>(SampleAt<4>(p)) / 2147483648.0);
            }, Width<4>{});
            break;
        case SampleKind::Float32:
            convert([](const std::uint8_t* p) {
                bool kept;
                return static_cast<float>(Measurable(FloatAt<float>(p), kept));
            }, Width<4>{});
            break;
        case SampleKind::Float64:
            convert([](const std::uint8_t* p) {
                bool kept;
                return static_cast<float>(Measurable(FloatAt<double>(p), kept));
            }, Width<8>{});
            break;
        }
    }
}
