#pragma once

#include "base/TextFormat.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>

// Reads of the little-endian fields of a chunk's body, each 0 where the
// body ends before the field does: a short body reads as if zero-filled.
using BodySpan = std::span<const std::uint8_t>;

inline std::uint32_t BodyU32(BodySpan body, std::size_t offset)
{
    if (offset + 4 > body.size())
        return 0;
    return body[offset] | body[offset + 1] << 8 | body[offset + 2] << 16 | std::uint32_t{body[offset + 3]} << 24;
}

inline std::uint16_t BodyU16(BodySpan body, std::size_t offset)
{
    if (offset + 2 > body.size())
        return 0;
    return static_cast<std::uint16_t>(body[offset] | body[offset + 1] << 8);
}

// The bytes of a text field of length bytes at offset, up to its first zero
// byte, as much of it as the body holds.
inline BodySpan BodyText(BodySpan body, std::size_t offset, std::size_t length)
{
    if (offset >= body.size())
        return {};
    BodySpan field = body.subspan(offset, std::min(length, body.size() - offset));
    std::size_t end = 0;
    while (end < field.size() && field[end] != 0)
        ++end;
    return field.first(end);
}

// Four bytes as a chunk id's text.
inline std::string BodyId(BodySpan body, std::size_t offset)
{
    std::string id(4, ' ');
    for (std::size_t i = 0; i < 4; ++i)
        id[i] = offset + i < body.size() ? static_cast<char>(body[offset + i]) : ' ';
    return id;
}

// An id as read, each byte that is not printable ASCII escaped, as every
// listing and message of the checker names chunks.
inline std::string IdText(const std::string& id)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && i < id.size(); ++i)
        value |= std::uint32_t{static_cast<std::uint8_t>(id[i])} << (8 * i);
    return ChunkIdText(value);
}
