#include "measure/LevelMeter.h"

#include "measure/LevelReport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

// The sums of one channel. Integers of up to 24 bits are summed exactly, the
// squares in 128 bits as two halves; 32-bit integers and floats in doubles.
struct LevelSums {
    std::int64_t sum = 0;
    std::uint64_t squaresLow = 0;
    std::uint64_t squaresHigh = 0;
    std::int32_t lowest = std::numeric_limits<std::int32_t>::max();
    std::int32_t highest = std::numeric_limits<std::int32_t>::min();
    std::uint64_t fullScale = 0;
    double squares = 0;
    double sumOfFloats = 0;
    double peak = 0;
    std::uint64_t overFullScale = 0;
    std::uint64_t nonFinite = 0;

    void AddSquares(std::uint64_t runSquares)
    {
        squaresLow += runSquares;
        squaresHigh += squaresLow < runSquares;
    }

    // Takes in the sums of other frames of the same channel.
    void Merge(const LevelSums& other)
    {
        sum += other.sum;
        AddSquares(other.squaresLow);
        squaresHigh += other.squaresHigh;
        lowest = std::min(lowest, other.lowest);
        highest = std::max(highest, other.highest);
        fullScale += other.fullScale;
        squares += other.squares;
        sumOfFloats += other.sumOfFloats;
        peak = std::max(peak, other.peak);
        overFullScale += other.overFullScale;
        nonFinite += other.nonFinite;
    }
};

namespace {

// Adds one channel of frames to its sums. The squares of a run of 65536
// samples fit in 64 bits even at 24 bits (2^46 each), so the 128-bit sum
// is touched once a run, and the inner loop keeps everything in registers.
// 32-bit samples: the sum exactly, the squares in doubles, a shorter run
// at a time.
template <int Bytes>
void AddChannel(const std::uint8_t* data, std::uint32_t frames, std::uint32_t stride, LevelSums& sums)
{
    constexpr std::int32_t kHighest = static_cast<std::int32_t>((std::uint32_t{1} << (Bytes * 8 - 1)) - 1);
    constexpr std::int32_t kLowest = -kHighest - 1;
    constexpr std::uint32_t kRun = Bytes == 4 ? 4096 : 65536;
    std::int64_t sum = 0;
    std::int32_t lowest = sums.lowest, highest = sums.highest;
    std::uint64_t fullScale = 0;
    for (std::uint32_t start = 0; start < frames; start += kRun) {
        const std::uint32_t end = std::min(frames, start + kRun);
        std::conditional_t<Bytes == 4, double, std::uint64_t> squares = 0;
        for (std::uint32_t frame = start; frame < end; ++frame) {
            const std::int32_t v = SampleAt<Bytes>(data + std::size_t{frame} * stride);
            sum += v;
            if constexpr (Bytes == 4)
                squares += static_cast<double>(v) * v;
            else
                squares += static_cast<std::uint64_t>(static_cast<std::int64_t>(v) * v);
            lowest = std::min(lowest, v);
            highest = std::max(highest, v);
            fullScale += static_cast<std::uint64_t>(v == kHighest) + static_cast<std::uint64_t>(v == kLowest);
        }
        if constexpr (Bytes == 4)
            sums.squares += squares;
        else
            sums.AddSquares(squares);
    }
    sums.sum += sum;
    sums.lowest = lowest;
    sums.highest = highest;
    sums.fullScale += fullScale;
}

// Packed frames of 8, 16 or 24-bit samples, all channels at once: the
// samples are one row, taken kLanes at a time, and lane l always holds
// channel l % channels, since the channels divide kLanes. The loop over a
// block's lanes has a fixed length and no branch, so the compiler makes it
// vector instructions; each lane keeps sums of its own, folded into its
// channel's at the end of a run. Sums as AddChannel's, to the last bit.
// Eight lanes of 16-bit samples fill one vector register, and their sums
// still stay in registers; with sixteen they went to memory every block.
constexpr std::uint32_t kLanes = 8;

bool FitsLanes(std::uint32_t channels)
{
    return channels > 0 && kLanes % channels == 0;
}

template <int Bytes, std::uint32_t Lanes = kLanes>
[[gnu::always_inline]] inline void AddPacked(const std::uint8_t* data, std::uint32_t frames, std::uint32_t channels,
                                             std::vector<LevelSums>& sums)
{
    // 8 and 16-bit samples and their squares fit in 32 bits.
    using Value = std::conditional_t<Bytes <= 2, std::int16_t, std::int32_t>;
    using Square = std::conditional_t<Bytes <= 2, std::uint32_t, std::uint64_t>;
    constexpr std::int32_t kHighest = (1 << (Bytes * 8 - 1)) - 1;
    constexpr std::int32_t kLowest = -kHighest - 1;
    // Blocks a run: a lane's squares of a run fit in 64 bits (see AddChannel).
    constexpr std::size_t kRunBlocks = 65536;
    const std::size_t samples = std::size_t{frames} * channels;
    const std::size_t blocks = samples / Lanes;
    std::int64_t sum[Lanes] = {};
    Value lowest[Lanes], highest[Lanes];
    std::uint32_t fullScale[Lanes] = {};
    for (std::uint32_t l = 0; l < Lanes; ++l) {
        lowest[l] = static_cast<Value>(kHighest);
        highest[l] = static_cast<Value>(kLowest);
    }
    for (std::size_t start = 0; start < blocks; start += kRunBlocks) {
        const std::size_t end = std::min(blocks, start + kRunBlocks);
        std::uint64_t squares[Lanes] = {};
        std::conditional_t<Bytes <= 2, std::int32_t, std::int64_t> runSum[Lanes] = {};
        for (std::size_t block = start; block < end; ++block) {
            const std::uint8_t* at = data + block * Lanes * Bytes;
            for (std::uint32_t l = 0; l < Lanes; ++l) {
                const auto v = static_cast<Value>(SampleAt<Bytes>(at + l * Bytes));
                runSum[l] += v;
                squares[l] += static_cast<Square>(static_cast<std::conditional_t<Bytes <= 2, std::int32_t, std::int64_t>>(v) * v);
                lowest[l] = std::min(lowest[l], v);
                highest[l] = std::max(highest[l], v);
                fullScale[l] += static_cast<std::uint32_t>(v == kHighest) + static_cast<std::uint32_t>(v == kLowest);
            }
        }
        for (std::uint32_t l = 0; l < Lanes; ++l) {
            sums[l % channels].AddSquares(squares[l]);
            sum[l] += runSum[l];
            sums[l % channels].fullScale += fullScale[l];
            fullScale[l] = 0;
        }
    }
    for (std::uint32_t l = 0; l < Lanes; ++l) {
        LevelSums& channel = sums[l % channels];
        channel.sum += sum[l];
        channel.lowest = std::min<std::int32_t>(channel.lowest, lowest[l]);
        channel.highest = std::max<std::int32_t>(channel.highest, highest[l]);
    }
    // The last frames, fewer than a block.
    const std::uint32_t done = static_cast<std::uint32_t>(blocks * Lanes / channels);
    for (std::uint32_t c = 0; c < channels; ++c)
        AddChannel<Bytes>(data + (std::size_t{done} * channels + c) * Bytes, frames - done, channels * Bytes, sums[c]);
}

// The same loop of 16-bit samples compiled for AVX2, sixteen lanes at once:
// a lane's sums still stay in the wider registers.
[[gnu::target("avx2")]] void AddPacked16Wide(const std::uint8_t* data, std::uint32_t frames, std::uint32_t channels,
                                             std::vector<LevelSums>& sums)
{
    AddPacked<2, 2 * kLanes>(data, frames, channels, sums);
}

// Floats: full scale is 1.0; a sample at or beyond it counts as at full
// scale, one beyond it as over full scale too.
template <typename Float>
void AddChannelFloat(const std::uint8_t* data, std::uint32_t frames, std::uint32_t stride, LevelSums& sums)
{
    constexpr std::uint32_t kRun = 4096;
    double sum = 0, peak = sums.peak;
    std::uint64_t fullScale = 0, over = 0, unkept = 0;
    for (std::uint32_t start = 0; start < frames; start += kRun) {
        const std::uint32_t end = std::min(frames, start + kRun);
        double squares = 0, runSum = 0;
        for (std::uint32_t frame = start; frame < end; ++frame) {
            bool kept;
            const double v = Measurable(FloatAt<Float>(data + std::size_t{frame} * stride), kept);
            const double magnitude = std::fabs(v);
            runSum += v;
            squares += v * v;
            peak = std::max(peak, magnitude);
            fullScale += magnitude >= 1.0;
            over += magnitude > 1.0;
            unkept += !kept;
        }
        sums.squares += squares;
        sum += runSum;
    }
    sums.sumOfFloats += sum;
    sums.peak = peak;
    sums.fullScale += fullScale;
    sums.overFullScale += over;
    sums.nonFinite += unkept;
}

// Frames of every channel, packed ones all channels at once where they can.
void AddFrames(const SampleFormat& format, VectorPath path, const std::uint8_t* data, std::uint32_t frames,
               std::uint32_t stride, std::vector<LevelSums>& sums)
{
    const auto channels = static_cast<std::uint32_t>(sums.size());
    const std::uint32_t bytesPerSample = format.bytesPerSample;
    if (stride == bytesPerSample * channels && FitsLanes(channels)) {
        switch (format.kind) {
        case SampleKind::Unsigned8: AddPacked<1>(data, frames, channels, sums); return;
        case SampleKind::Signed16:
            if (path != VectorPath::Plain)
                AddPacked16Wide(data, frames, channels, sums);
            else
                AddPacked<2>(data, frames, channels, sums);
            return;
        case SampleKind::Signed24: AddPacked<3>(data, frames, channels, sums); return;
        default: break;
        }
    }
    for (std::size_t c = 0; c < channels; ++c) {
        const std::uint8_t* channel = data + c * bytesPerSample;
        switch (format.kind) {
        case SampleKind::Unsigned8: AddChannel<1>(channel, frames, stride, sums[c]); break;
        case SampleKind::Signed16: AddChannel<2>(channel, frames, stride, sums[c]); break;
        case SampleKind::Signed24: AddChannel<3>(channel, frames, stride, sums[c]); break;
        case SampleKind::Signed32: AddChannel<4>(channel, frames, stride, sums[c]); break;
        case SampleKind::Float32: AddChannelFloat<float>(channel, frames, stride, sums[c]); break;
        case SampleKind::Float64: AddChannelFloat<double>(channel, frames, stride, sums[c]); break;
        }
    }
}

} // namespace

LevelMeter::LevelMeter(const SampleFormat& format) : format(format), path(BestVectorPath()), sums(format.channels) {}

LevelMeter::~LevelMeter() = default;

void LevelMeter::AddBytes(const RawFrames& bytes)
{
    AddFrames(format, path, bytes.data, bytes.frames, bytes.stride, sums);
}

std::unique_ptr<Meter> LevelMeter::MakeTwin() const
{
    return std::make_unique<LevelMeter>(format);
}

void LevelMeter::Merge(const Meter& twin)
{
    const std::vector<LevelSums>& other = static_cast<const LevelMeter&>(twin).sums;
    for (std::size_t c = 0; c < sums.size(); ++c)
        sums[c].Merge(other[c]);
}

void LevelMeter::Finish(LevelReport& report)
{
    const auto count = static_cast<double>(report.frames);
    for (const LevelSums& s : sums) {
        ChannelLevels levels;
        if (format.IsFloat()) {
            // The mean of the samples taken in; none taken is silence.
            const double kept = count - static_cast<double>(s.nonFinite);
            levels.peak = s.peak;
            levels.rms = kept > 0 ? std::sqrt(s.squares / kept) : 0;
            levels.dcOffset = kept > 0 ? s.sumOfFloats / kept : 0;
            levels.overFullScale = s.overFullScale;
            levels.nonFinite = s.nonFinite;
        } else {
            const double fullScale = std::ldexp(1.0, format.bits - 1);
            const double squares = format.kind == SampleKind::Signed32
                                       ? s.squares
                                       : std::ldexp(static_cast<double>(s.squaresHigh), 64) + static_cast<double>(s.squaresLow);
            levels.peak = std::max(-static_cast<double>(s.lowest), static_cast<double>(s.highest)) / fullScale;
            levels.rms = std::sqrt(squares / count) / fullScale;
            levels.dcOffset = static_cast<double>(s.sum) / count / fullScale;
        }
        levels.fullScale = s.fullScale;
        report.channels.push_back(levels);
    }
}
