#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// What the fuzz targets share: how an input becomes text, and how a broken
// invariant ends the run so that the fuzzer keeps the input.

// The input's bytes in pairs as UTF-16 units, so that every unit, CR, LF
// and zero among them, can occur; an odd last byte is dropped.
inline std::u16string UnitsFromBytes(const std::uint8_t* data, std::size_t size)
{
    std::u16string units(size / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
    return units;
}

[[noreturn]] inline void FailInvariant(const char* what)
{
    std::fprintf(stderr, "invariant broken: %s\n", what);
    std::abort();
}
