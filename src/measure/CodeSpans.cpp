#include "measure/CodeSpans.h"

#include <cassert>
#include <cstring>

namespace {

// Sixteen codes, a row of samples, in a vector of the compiler's own; lane
// l holds channel l % channels, since the channels divide kCodeLanes and
// so sixteen.
constexpr std::uint32_t kRowCodes = 16;
constexpr std::uint32_t kSpanRows = kSpanSamples / kRowCodes;
// Aligned as 16 bytes, not 32: the 64-bit Windows build can't align its
// stack past 16, and a vector kept there must not need more.
typedef std::int16_t Codes __attribute__((vector_size(32), aligned(16)));
typedef std::uint16_t Magnitudes __attribute__((vector_size(32), aligned(16)));

// Sets all bits of outside's lanes where a row's magnitude lies outside low
// to low + width. Unsigned, a magnitude below low wraps past the width too.
// Vectors go in and out by reference, as the 32-bit build has no vector
// registers to pass them in.
[[gnu::always_inline]] inline void MarkOutside(const std::uint8_t* row, const Magnitudes& low, const Magnitudes& width,
                                               Magnitudes& outside)
{
    Codes codes;
    std::memcpy(&codes, row, sizeof codes);
    // Unsigned, so that |-32768| wraps to 32768 rather than overflowing.
    const auto bits = reinterpret_cast<Magnitudes>(codes), sign = reinterpret_cast<Magnitudes>(codes >> 15);
    const Magnitudes magnitude = (bits ^ sign) - sign;
    outside |= reinterpret_cast<Magnitudes>(magnitude - low > width);
}

// The first sample outside its range in spans spans from data, or the
// samples of the spans when none is: a span at a time, and row by row in
// the span that holds one. Inlined into each path's function, so that each
// is compiled for its processors.
[[gnu::always_inline]] inline std::size_t FirstOutsideIn(const std::uint8_t* data, std::size_t spans,
                                                         const Magnitudes& low, const Magnitudes& width)
{
    for (std::size_t span = 0; span < spans; ++span) {
        const std::uint8_t* first = data + span * kSpanSamples * sizeof(std::int16_t);
        Magnitudes outside{};
        for (std::uint32_t row = 0; row < kSpanRows; ++row)
            MarkOutside(first + row * sizeof(Codes), low, width, outside);
        std::uint64_t words[sizeof outside / 8];
        std::memcpy(words, &outside, sizeof outside);
        if ((words[0] | words[1] | words[2] | words[3]) == 0)
            continue;
        for (std::uint32_t row = 0; row < kSpanRows; ++row) {
            Magnitudes lanes{};
            MarkOutside(first + row * sizeof(Codes), low, width, lanes);
            for (std::uint32_t l = 0; l < kRowCodes; ++l) {
                if (lanes[l] != 0)
                    return span * kSpanSamples + row * kRowCodes + l;
            }
        }
    }
    return spans * kSpanSamples;
}

[[gnu::target("avx2")]] std::size_t FirstOutsideWide(const std::uint8_t* data, std::size_t spans, const Magnitudes& low,
                                                     const Magnitudes& width)
{
    return FirstOutsideIn(data, spans, low, width);
}

} // namespace

std::uint32_t FramesInRanges(VectorPath path, const std::uint8_t* data, std::uint32_t frames,
                             std::uint32_t channels, const MagnitudeRanges& ranges)
{
    static_assert(kRowCodes % kCodeLanes == 0 && (kCodeLanes & (kCodeLanes - 1)) == 0);
    assert(channels > 0 && kCodeLanes % channels == 0);
    Magnitudes low, width;
    for (std::uint32_t l = 0; l < kRowCodes; ++l) {
        // The channels divide kCodeLanes, a power of two: a mask is the
        // remainder, and no division is made for each of the lanes.
        const std::uint32_t c = l & (channels - 1);
        low[l] = ranges.low[c];
        width[l] = static_cast<std::uint16_t>(ranges.high[c] - ranges.low[c]);
    }
    const std::size_t samples = std::size_t{frames} * channels, spans = samples / kSpanSamples;
    std::size_t i = path != VectorPath::Plain ? FirstOutsideWide(data, spans, low, width) : FirstOutsideIn(data, spans, low, width);
    // The samples past the spans, one at a time.
    if (i == spans * kSpanSamples) {
        for (; i < samples; ++i) {
            const std::int32_t code = SampleAt<2>(data + 2 * i);
            const auto magnitude = static_cast<std::uint16_t>(code < 0 ? -code : code);
            if (static_cast<std::uint16_t>(magnitude - low[i % kRowCodes]) > width[i % kRowCodes])
                break;
        }
    }
    return static_cast<std::uint32_t>(i / channels);
}
