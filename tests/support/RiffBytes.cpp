#include "support/RiffBytes.h"

#include <cstring>

RiffBytes& RiffBytes::Raw(std::string_view raw)
{
    bytes.append(raw);
    return *this;
}

RiffBytes& RiffBytes::U16(std::uint16_t value)
{
    bytes.push_back(static_cast<char>(value & 0xFF));
    bytes.push_back(static_cast<char>(value >> 8));
    return *this;
}

RiffBytes& RiffBytes::U32(std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>((value >> shift) & 0xFF));
    return *this;
}

RiffBytes& RiffBytes::U64(std::uint64_t value)
{
    U32(static_cast<std::uint32_t>(value));
    return U32(static_cast<std::uint32_t>(value >> 32));
}

RiffBytes& RiffBytes::Id(std::string_view fourcc)
{
    return Raw(fourcc.substr(0, 4));
}

RiffBytes& RiffBytes::Chunk(std::string_view fourcc, std::string_view body)
{
    ChunkNoPad(fourcc, body);
    if (body.size() % 2 != 0)
        bytes.push_back('\0');
    return *this;
}

RiffBytes& RiffBytes::ChunkNoPad(std::string_view fourcc, std::string_view body)
{
    return ChunkWithSize(fourcc, static_cast<std::uint32_t>(body.size()), body);
}

RiffBytes& RiffBytes::ChunkWithSize(std::string_view fourcc, std::uint32_t declaredSize, std::string_view body)
{
    return Id(fourcc).U32(declaredSize).Raw(body);
}

RiffBytes& RiffBytes::Head(std::string_view fourcc, std::uint32_t declaredSize, std::string_view type)
{
    return Id(fourcc).U32(declaredSize).Id(type);
}

std::string FormatBodyAligned(std::uint16_t tag, std::uint16_t channels, std::uint32_t samplesPerSec,
                              std::uint16_t bitsPerSample, std::uint16_t blockAlign)
{
    return RiffBytes()
        .U16(tag)
        .U16(channels)
        .U32(samplesPerSec)
        .U32(samplesPerSec * blockAlign)
        .U16(blockAlign)
        .U16(bitsPerSample)
        .Bytes();
}

std::string FormatBody(std::uint16_t tag, std::uint16_t channels, std::uint32_t samplesPerSec,
                       std::uint16_t bitsPerSample)
{
    auto blockAlign = static_cast<std::uint16_t>(channels * ((bitsPerSample + 7) / 8));
    return FormatBodyAligned(tag, channels, samplesPerSec, bitsPerSample, blockAlign);
}

std::string Riff(std::string_view children, std::string_view formType)
{
    return RiffBytes().Head("RIFF", static_cast<std::uint32_t>(children.size() + 4), formType).Raw(children).Bytes();
}

std::string FmtBytes(std::string_view body)
{
    return RiffBytes().Chunk("fmt ", body).Bytes();
}

std::string DataBytes(std::string_view body)
{
    return RiffBytes().Chunk("data", body).Bytes();
}

std::string ListBytes(std::string_view type, std::string_view body)
{
    return RiffBytes().Head("LIST", static_cast<std::uint32_t>(body.size() + 4), type).Raw(body).Bytes();
}

std::string Wave(std::string_view formatBody, std::string_view audio)
{
    return Riff(FmtBytes(formatBody) + DataBytes(audio));
}

std::string SoundWave(std::uint32_t frames)
{
    return Wave(FormatBody(1, 2, 44100, 16), std::string(frames * 4, '\0'));
}

namespace {

template <typename Float>
std::string FloatWaveOf(const std::vector<Float>& samples, std::uint16_t channels, std::uint32_t rate)
{
    std::string audio(samples.size() * sizeof(Float), '\0');
    std::memcpy(audio.data(), samples.data(), audio.size());
    return Wave(FormatBody(3, channels, rate, sizeof(Float) * 8), audio);
}

} // namespace

std::string FloatWave(const std::vector<float>& samples, std::uint16_t channels, std::uint32_t rate)
{
    return FloatWaveOf(samples, channels, rate);
}

std::string FloatWave(const std::vector<double>& samples, std::uint16_t channels, std::uint32_t rate)
{
    return FloatWaveOf(samples, channels, rate);
}
