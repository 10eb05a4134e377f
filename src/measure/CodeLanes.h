#pragma once

#include "measure/SampleFormat.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Packed frames of 16-bit samples taken as codes, a row of samples
// kCodeLanes at a time: lane l always holds channel l % channels, since
// the channels divide kCodeLanes. Loops of fixed length over the lanes,
// with no branch, are ones the compiler makes vector instructions of.
// Such codes are exact in every sum the meters keep (a square or product
// is at most 2^30 units of 2^-30), so integer sums give their double sums
// to the bit while those stay below 2^53 units.
constexpr std::uint32_t kCodeLanes = 8;

inline bool TakesCodeLanes(const SampleFormat& format)
{
    return format.kind == SampleKind::Signed16 && format.IsPacked() && kCodeLanes % format.channels == 0;
}

// The kCodeLanes codes from at. The samples are little-endian, as the
// processors this program is built for.
inline void LoadCodes(const std::uint8_t* at, std::int16_t (&codes)[kCodeLanes])
{
    static_assert(std::endian::native == std::endian::little);
    std::memcpy(codes, at, sizeof codes);
}

// Splits count codes from data among the loops of a meter: rows of
// 2 * kCodeLanes codes, wide(data, rows), where wideRows says so; rows of
// kCodeLanes codes, plain(from, rows); and one(i) for each code i left.
// Lane l of either row is the channel of lane l % kCodeLanes.
template <typename Wide, typename Plain, typename One>
void SplitCodeRows(bool wideRows, const std::uint8_t* data, std::size_t count, Wide&& wide, Plain&& plain, One&& one)
{
    std::size_t done = 0;
    if (wideRows) {
        wide(data, count / (2 * kCodeLanes));
        done = count / (2 * kCodeLanes) * 2 * kCodeLanes;
    }
    const std::size_t rows = (count - done) / kCodeLanes;
    plain(data + 2 * done, rows);
    for (std::size_t i = done + rows * kCodeLanes; i < count; ++i)
        one(i);
}

// The least and the most magnitude of each channel's codes over frames
// frames from data, a multiple of kCodeLanes of them.
struct CodeMagnitudes {
    std::int32_t least[kCodeLanes], most[kCodeLanes]; // by channel
};

inline CodeMagnitudes MagnitudesOf(const std::uint8_t* data, std::uint32_t frames, std::uint32_t channels)
{
    std::int32_t least[kCodeLanes], most[kCodeLanes];
    std::fill_n(least, kCodeLanes, 1 << 30);
    std::fill_n(most, kCodeLanes, 0);
    const std::size_t rows = std::size_t{frames} * channels / kCodeLanes;
    for (std::size_t row = 0; row < rows; ++row) {
        std::int16_t codes[kCodeLanes];
        LoadCodes(data + row * sizeof codes, codes);
        for (std::uint32_t l = 0; l < kCodeLanes; ++l) {
            const std::int32_t magnitude = codes[l] < 0 ? -codes[l] : codes[l];
            least[l] = std::min(least[l], magnitude);
            most[l] = std::max(most[l], magnitude);
        }
    }
    CodeMagnitudes by;
    for (std::uint32_t c = 0; c < channels; ++c) {
        by.least[c] = least[c];
        by.most[c] = most[c];
        for (std::uint32_t l = c + channels; l < kCodeLanes; l += channels) {
            by.least[c] = std::min(by.least[c], least[l]);
            by.most[c] = std::max(by.most[c], most[l]);
        }
    }
    return by;
}
