#pragma once

#include <cstdint>

// Chunk ids are the four bytes of the id in file order, read as one
// little-endian unsigned 32-bit value.
constexpr std::uint32_t MakeFourCc(const char (&text)[5])
{
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[3])) << 24;
}

constexpr std::uint32_t kIdRiff = MakeFourCc("RIFF");
constexpr std::uint32_t kIdWave = MakeFourCc("WAVE");
constexpr std::uint32_t kIdFormat = MakeFourCc("fmt ");
constexpr std::uint32_t kIdData = MakeFourCc("data");
constexpr std::uint32_t kIdList = MakeFourCc("LIST");
constexpr std::uint32_t kIdInfo = MakeFourCc("INFO");
constexpr std::uint32_t kIdBext = MakeFourCc("bext");
constexpr std::uint32_t kIdRf64 = MakeFourCc("RF64");

inline std::uint32_t ReadLittleEndian32(const std::uint8_t* bytes)
{
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

inline void WriteLittleEndian32(std::uint8_t* bytes, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

inline void WriteLittleEndian16(std::uint8_t* bytes, std::uint16_t value)
{
    bytes[0] = static_cast<std::uint8_t>(value);
    bytes[1] = static_cast<std::uint8_t>(value >> 8);
}

inline std::uint16_t ReadLittleEndian16(const std::uint8_t* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline std::uint64_t ReadLittleEndian64(const std::uint8_t* bytes)
{
    return ReadLittleEndian32(bytes) | static_cast<std::uint64_t>(ReadLittleEndian32(bytes + 4)) << 32;
}
