#include "measure/CodeSpans.h"

#include <cstring>

namespace {

// Sixteen codes, a row of samples, in a vector of the compiler's own; lane
// l holds channel l % channels, since the channels divide kCodeLanes and
// so sixteen.
constexpr std::uint32_t kRowCodes = 16;
constexpr std::uint32_t kSpanRows = kSpanSamples / kRowCodes;
using Codes = std::int16_t __attribute__((vector_size(32)));
using Magnitudes = std::uint16_t __attribute__((vector_size(32)));

// The spans of spans from data whose magnitudes all lie between low and
// low + width, lane by lane. Inlined into each path's function, so that
// each is compiled for its processors; vectors come in by reference, as
// the 32-bit build has no vector registers to pass them in.
[[gnu::always_inline]] inline std::size_t SpansInRangesIn(const std::uint8_t* data, std::size_t spans,
                                                          const Magnitudes& low, const Magnitudes& width)
{
    for (std::size_t span = 0; span < spans; ++span) {
        Magnitudes outside{};
        for (std::uint32_t row = 0; row < kSpanRows; ++row) {
            Codes codes;
            std::memcpy(&codes, data + (span * kSpanRows + row) * sizeof codes, sizeof codes);
            const Codes sign = codes >> 15;
            const auto magnitude = reinterpret_cast<Magnitudes>((codes ^ sign) - sign);
            // Unsigned, a magnitude below low wraps past the width too.
            outside |= reinterpret_cast<Magnitudes>(magnitude - low > width);
        }
        std::uint64_t words[sizeof outside / 8];
        std::memcpy(words, &outside, sizeof outside);
        if ((words[0] | words[1] | words[2] | words[3]) != 0)
            return span;
    }
    return spans;
}

[[gnu::target("avx2")]] std::size_t SpansInRangesWide(const std::uint8_t* data, std::size_t spans,
                                                      const Magnitudes& low, const Magnitudes& width)
{
    return SpansInRangesIn(data, spans, low, width);
}

} // namespace

std::uint32_t FramesInRanges(VectorPath path, const std::uint8_t* data, std::uint32_t frames,
                             std::uint32_t channels, const MagnitudeRanges& ranges)
{
    static_assert(kRowCodes % kCodeLanes == 0);
    Magnitudes low, width;
    for (std::uint32_t l = 0; l < kRowCodes; ++l) {
        low[l] = ranges.low[l % channels];
        width[l] = static_cast<std::uint16_t>(ranges.high[l % channels] - ranges.low[l % channels]);
    }
    const std::size_t spans = std::size_t{frames} * channels / kSpanSamples;
    const std::size_t passed = path == VectorPath::Wide ? SpansInRangesWide(data, spans, low, width)
                                                        : SpansInRangesIn(data, spans, low, width);
    return static_cast<std::uint32_t>(passed * kSpanSamples / channels);
}
