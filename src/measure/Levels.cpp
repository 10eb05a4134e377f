#include "measure/Levels.h"

#include "base/TextFormat.h"
#include "files/FileStream.h"
#include "files/UnbufferedReader.h"
#include "wave/DataChunk.h"
#include "wave/FileFacts.h"
#include "wave/FormatChunk.h"
#include "wave/Rf64File.h"
#include "wave/WaveDocument.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>

namespace {

constexpr char kOnlyPcm[] = ": levels are measured for PCM (8, 16, 24 and 32-bit) and float (32 and 64-bit) only";
// Audio is read in requests of this many bytes, behind room for the part
// of a frame that the request before ended in (a frame is at most 65,535
// bytes); both are whole sectors of any volume.
constexpr std::uint32_t kReadBytes = 4 * 1024 * 1024;
constexpr std::uint32_t kHeadBytes = 64 * 1024;

enum class SampleKind { Unsigned8, Signed16, Signed24, Signed32, Float32, Float64 };

// Sums of one channel. Integers of up to 24 bits are summed exactly, the
// squares in 128 bits as two halves; 32-bit integers and floats in doubles.
struct ChannelSums {
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
    void Merge(const ChannelSums& other)
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

// Adds one channel of frames to its sums. The squares of a run of 65536
// samples fit in 64 bits even at 24 bits (2^46 each), so the 128-bit sum
// is touched once a run, and the inner loop keeps everything in registers.
template <int Bytes>
void AddChannel(const std::uint8_t* data, std::uint32_t frames, std::uint32_t stride, ChannelSums& sums)
{
    constexpr std::int32_t kHighest = (1 << (Bytes * 8 - 1)) - 1;
    constexpr std::int32_t kLowest = -kHighest - 1;
    constexpr std::uint32_t kRun = 65536;
    std::int64_t sum = 0;
    std::int32_t lowest = sums.lowest, highest = sums.highest;
    std::uint64_t fullScale = 0;
    for (std::uint32_t start = 0; start < frames; start += kRun) {
        const std::uint32_t end = std::min(frames, start + kRun);
        std::uint64_t squares = 0;
        for (std::uint32_t frame = start; frame < end; ++frame) {
            const std::int32_t v = SampleAt<Bytes>(data + std::size_t{frame} * stride);
            sum += v;
            squares += static_cast<std::uint64_t>(static_cast<std::int64_t>(v) * v);
            lowest = std::min(lowest, v);
            highest = std::max(highest, v);
            fullScale += (v == kHighest) | (v == kLowest);
        }
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

template <int Bytes>
void AddPacked(const std::uint8_t* data, std::uint32_t frames, std::uint32_t channels, std::vector<ChannelSums>& sums)
{
    // 8 and 16-bit samples and their squares fit in 32 bits.
    using Value = std::conditional_t<Bytes <= 2, std::int16_t, std::int32_t>;
    using Square = std::conditional_t<Bytes <= 2, std::uint32_t, std::uint64_t>;
    constexpr std::int32_t kHighest = (1 << (Bytes * 8 - 1)) - 1;
    constexpr std::int32_t kLowest = -kHighest - 1;
    // Blocks a run: a lane's squares of a run fit in 64 bits (see AddChannel).
    constexpr std::size_t kRunBlocks = 65536;
    const std::size_t samples = std::size_t{frames} * channels;
    const std::size_t blocks = samples / kLanes;
    std::int64_t sum[kLanes] = {};
    Value lowest[kLanes], highest[kLanes];
    std::uint32_t fullScale[kLanes] = {};
    for (std::uint32_t l = 0; l < kLanes; ++l) {
        lowest[l] = static_cast<Value>(kHighest);
        highest[l] = static_cast<Value>(kLowest);
    }
    for (std::size_t start = 0; start < blocks; start += kRunBlocks) {
        const std::size_t end = std::min(blocks, start + kRunBlocks);
        std::uint64_t squares[kLanes] = {};
        std::conditional_t<Bytes <= 2, std::int32_t, std::int64_t> runSum[kLanes] = {};
        for (std::size_t block = start; block < end; ++block) {
            const std::uint8_t* at = data + block * kLanes * Bytes;
            for (std::uint32_t l = 0; l < kLanes; ++l) {
                const auto v = static_cast<Value>(SampleAt<Bytes>(at + l * Bytes));
                runSum[l] += v;
                squares[l] += static_cast<Square>(static_cast<std::conditional_t<Bytes <= 2, std::int32_t, std::int64_t>>(v) * v);
                lowest[l] = std::min(lowest[l], v);
                highest[l] = std::max(highest[l], v);
                fullScale[l] += static_cast<std::uint32_t>(v == kHighest) + static_cast<std::uint32_t>(v == kLowest);
            }
        }
        for (std::uint32_t l = 0; l < kLanes; ++l) {
            sums[l % channels].AddSquares(squares[l]);
            sum[l] += runSum[l];
            sums[l % channels].fullScale += fullScale[l];
            fullScale[l] = 0;
        }
    }
    for (std::uint32_t l = 0; l < kLanes; ++l) {
        ChannelSums& channel = sums[l % channels];
        channel.sum += sum[l];
        channel.lowest = std::min<std::int32_t>(channel.lowest, lowest[l]);
        channel.highest = std::max<std::int32_t>(channel.highest, highest[l]);
    }
    // The last frames, fewer than a block.
    const std::uint32_t done = static_cast<std::uint32_t>(blocks * kLanes / channels);
    for (std::uint32_t c = 0; c < channels; ++c)
        AddChannel<Bytes>(data + (std::size_t{done} * channels + c) * Bytes, frames - done, channels * Bytes, sums[c]);
}

// 32-bit integers: the sum exactly, the squares in doubles, a run at a time.
void AddChannel32(const std::uint8_t* data, std::uint32_t frames, std::uint32_t stride, ChannelSums& sums)
{
    constexpr std::uint32_t kRun = 4096;
    std::int64_t sum = 0;
    std::int32_t lowest = sums.lowest, highest = sums.highest;
    std::uint64_t fullScale = 0;
    for (std::uint32_t start = 0; start < frames; start += kRun) {
        const std::uint32_t end = std::min(frames, start + kRun);
        double squares = 0;
        for (std::uint32_t frame = start; frame < end; ++frame) {
            const std::int32_t v = SampleAt<4>(data + std::size_t{frame} * stride);
            sum += v;
            squares += static_cast<double>(v) * v;
            lowest = std::min(lowest, v);
            highest = std::max(highest, v);
            fullScale += static_cast<std::uint64_t>(v == std::numeric_limits<std::int32_t>::max()) +
                         static_cast<std::uint64_t>(v == std::numeric_limits<std::int32_t>::min());
        }
        sums.squares += squares;
    }
    sums.sum += sum;
    sums.lowest = lowest;
    sums.highest = highest;
    sums.fullScale += fullScale;
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

// Floats: full scale is 1.0; a sample at or beyond it counts as at full
// scale, one beyond it as over full scale too.
template <typename Float>
void AddChannelFloat(const std::uint8_t* data, std::uint32_t frames, std::uint32_t stride, ChannelSums& sums)
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
void AddFrames(SampleKind kind, std::uint32_t bytesPerSample, const std::uint8_t* data, std::uint32_t frames,
               std::uint32_t stride, std::vector<ChannelSums>& sums)
{
    const auto channels = static_cast<std::uint32_t>(sums.size());
    if (stride == bytesPerSample * channels && FitsLanes(channels)) {
        switch (kind) {
        case SampleKind::Unsigned8: AddPacked<1>(data, frames, channels, sums); return;
        case SampleKind::Signed16: AddPacked<2>(data, frames, channels, sums); return;
        case SampleKind::Signed24: AddPacked<3>(data, frames, channels, sums); return;
        default: break;
        }
    }
    for (std::size_t c = 0; c < channels; ++c) {
        const std::uint8_t* channel = data + c * bytesPerSample;
        switch (kind) {
        case SampleKind::Unsigned8: AddChannel<1>(channel, frames, stride, sums[c]); break;
        case SampleKind::Signed16: AddChannel<2>(channel, frames, stride, sums[c]); break;
        case SampleKind::Signed24: AddChannel<3>(channel, frames, stride, sums[c]); break;
        case SampleKind::Signed32: AddChannel32(channel, frames, stride, sums[c]); break;
        case SampleKind::Float32: AddChannelFloat<float>(channel, frames, stride, sums[c]); break;
        case SampleKind::Float64: AddChannelFloat<double>(channel, frames, stride, sums[c]); break;
        }
    }
}

// Interleaved samples of any kind as floats at full scale ±1.0, interleaved
// as they came. Packed frames (the usual case) are one run of samples in a
// row; frames with room to spare go channel by channel.
void ToFloats(SampleKind kind, std::uint32_t bytesPerSample, const std::uint8_t* data, std::uint32_t frames,
              std::uint32_t stride, std::uint32_t channels, std::vector<float>& out)
{
    const bool packed = stride == bytesPerSample * channels;
    const std::uint32_t runs = packed ? 1 : channels;
    const std::size_t length = packed ? std::size_t{frames} * channels : frames;
    const std::size_t step = packed ? bytesPerSample : stride;
    const std::size_t outStep = packed ? 1 : channels;
    for (std::uint32_t c = 0; c < runs; ++c) {
        const std::uint8_t* from = data + c * bytesPerSample;
        float* target = out.data() + c;
        const auto convert = [&](auto valueAt) {
            for (std::size_t i = 0; i < length; ++i)
                target[i * outStep] = valueAt(from + i * step);
        };
        switch (kind) {
        case SampleKind::Unsigned8:
            convert([](const std::uint8_t* p) { return static_cast<float>(SampleAt<1>(p)) / 128.0f; });
            break;
        case SampleKind::Signed16:
            convert([](const std::uint8_t* p) { return static_cast<float>(SampleAt<2>(p)) / 32768.0f; });
            break;
        case SampleKind::Signed24:
            convert([](const std::uint8_t* p) { return static_cast<float>(SampleAt<3>(p)) / 8388608.0f; });
            break;
        case SampleKind::Signed32:
            convert([](const std::uint8_t* p) {
                return static_cast<float>(static_cast<double>(SampleAt<4>(p)) / 2147483648.0);
            });
            break;
        case SampleKind::Float32:
            convert([](const std::uint8_t* p) {
                bool kept;
                return static_cast<float>(Measurable(FloatAt<float>(p), kept));
            });
            break;
        case SampleKind::Float64:
            convert([](const std::uint8_t* p) {
                bool kept;
                return static_cast<float>(Measurable(FloatAt<double>(p), kept));
            });
            break;
        }
    }
}

bool Refuse(std::string& problem, const std::string& why)
{
    problem = why;
    return false;
}

// The sample format of a format chunk's body (its first 40 bytes, or
// fewer): its tag, or an extensible format's sub-format, with the
// container's bits. False with the reason in problem for anything else.
bool SampleKindOf(const std::uint8_t* body, std::uint32_t length, SampleKind& kind, std::string& problem)
{
    if (length < 16)
        return Refuse(problem, "a format chunk of " + std::to_string(length) + " bytes");
    std::uint16_t tag = static_cast<std::uint16_t>(body[0] | body[1] << 8);
    const auto bits = static_cast<std::uint16_t>(body[14] | body[15] << 8);
    if (tag == kFormatTagExtensible) {
        if (length < 40 || std::memcmp(body + 26, kSubFormatTail, sizeof kSubFormatTail) != 0)
            return Refuse(problem, "an extensible format without a known sub-format" + std::string(kOnlyPcm));
        tag = static_cast<std::uint16_t>(body[24] | body[25] << 8);
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
    return Refuse(problem, detail + std::string(kOnlyPcm));
}

// What the measuring needs of a file, whichever container it is in.
struct AudioPlace {
    std::uint8_t format[40] = {};
    std::uint32_t formatBytes = 0;
    std::int64_t dataPosition = -1;
    std::int64_t frameCount = 0; // those both declared and present
};

// A RIFF file through the reader; an RF64 file through its own layout. The
// data position stays -1 when there is no data chunk.
bool FindAudio(const WideString& path, AudioPlace& place, std::string& problem)
{
    WaveDocument document;
    document.SetTreeForm(TreeForm::SlotsOnly);
    document.Open(path);
    if (document.GetContainerKind() != kContainerRiff) {
        Rf64Layout layout;
        if (!IsRf64File(path) || !ReadRf64Layout(path, layout, problem))
            return Refuse(problem, "not a RIFF file");
        if (layout.formatBytes == 0)
            return Refuse(problem, "no format chunk");
        std::memcpy(place.format, layout.format, layout.formatBytes);
        place.formatBytes = layout.formatBytes;
        place.dataPosition = layout.dataPosition;
        const auto blockAlign = static_cast<std::uint16_t>(layout.format[12] | layout.format[13] << 8);
        const std::int64_t present = std::min(layout.dataSize, layout.fileSize - (layout.dataPosition + 8));
        place.frameCount = blockAlign ? std::max<std::int64_t>(0, present) / blockAlign : 0;
        return true;
    }
    const FormatChunk* formatChunk = document.GetFormatChunk();
    if (!formatChunk)
        return Refuse(problem, "no format chunk");
    const DataChunk* dataChunk = document.GetDataChunk();
    // The record as the reader holds it, and the rest of the body from the
    // file for an extensible format's sub-format.
    const WaveFormat format = formatChunk->GetFormat();
    const std::uint16_t fields[] = {format.formatTag, format.channels};
    std::memcpy(place.format, fields, 4);
    const std::uint32_t rates[] = {format.samplesPerSec, format.avgBytesPerSec};
    std::memcpy(place.format + 4, rates, 8);
    const std::uint16_t frame[] = {format.blockAlign, format.bitsPerSample};
    std::memcpy(place.format + 12, frame, 4);
    place.formatBytes = 16;
    if (format.formatTag == kFormatTagExtensible && formatChunk->GetSize() >= 40) {
        StreamGuard guard;
        FileStream& stream = document.AcquireStream(guard);
        if (stream.SeekTo(formatChunk->GetPosition() + 8 + 16) && stream.Read(place.format + 16, 24) == 24)
            place.formatBytes = 40;
    }
    if (dataChunk && format.blockAlign > 0) {
        place.dataPosition = dataChunk->GetPosition();
        const std::int64_t present = GetDocumentFileSize(document) - (place.dataPosition + 8);
        place.frameCount = std::max<std::int64_t>(0, std::min(dataChunk->GetFrameCount(), present / format.blockAlign));
    } else if (dataChunk) {
        place.dataPosition = dataChunk->GetPosition();
    }
    return true;
}

} // namespace

double ToDecibels(double fraction)
{
    return fraction > 0 ? 20 * std::log10(fraction) : -std::numeric_limits<double>::infinity();
}

bool MeasureLevels(const WideString& path, LevelReport& report, std::string& problem, bool loudness,
                   const MeasureProgress& progress)
{
    report = LevelReport();
    if (!IsExistingFile(path))
        return Refuse(problem, "no such file");
    AudioPlace place;
    if (!FindAudio(path, place, problem))
        return false;
    SampleKind kind;
    if (!SampleKindOf(place.format, place.formatBytes, kind, problem))
        return false;
    WaveFormat format;
    format.channels = static_cast<std::uint16_t>(place.format[2] | place.format[3] << 8);
    format.samplesPerSec = static_cast<std::uint32_t>(place.format[4] | place.format[5] << 8 | place.format[6] << 16) |
                           static_cast<std::uint32_t>(place.format[7]) << 24;
    format.blockAlign = static_cast<std::uint16_t>(place.format[12] | place.format[13] << 8);
    format.bitsPerSample = static_cast<std::uint16_t>(place.format[14] | place.format[15] << 8);
    const std::uint32_t bytesPerSample = format.bitsPerSample / 8u;
    if (format.channels < 1)
        return Refuse(problem, "no channels");
    if (format.blockAlign < format.channels * bytesPerSample)
        return Refuse(problem, "a frame of " + std::to_string(format.blockAlign) + " bytes can't hold " +
                                   std::to_string(format.channels) + " samples of " +
                                   std::to_string(format.bitsPerSample) + " bits");

    if (place.dataPosition < 0)
        return Refuse(problem, "no data chunk");
    // The K-weighting's high shelf turns at about 1.7 kHz. Below 8 kHz its
    // corner crowds the Nyquist frequency, where the bilinear transform
    // bends it out of shape (at 3.4 kHz and below there is no filter at
    // all), so the figure would no longer be a loudness.
    if (loudness && format.samplesPerSec < kLowestLoudnessRate)
        return Refuse(problem, "loudness is measured at " + FormatCount(kLowestLoudnessRate) + " Hz and above, not at " +
                                   FormatCount(format.samplesPerSec) + " Hz");

    // The audio is read past the system's cache in requests of 4 MiB, each
    // straight into a piece of its own: as large as the disk wants them,
    // and nothing copied. The requests start at the sector of the data
    // chunk's body; a frame cut by the end of a request goes to the room
    // in front of the next piece.
    UnbufferedReader audio;
    if (!audio.Open(path) || kHeadBytes % audio.GetSectorSize() != 0)
        return Refuse(problem, "the audio can't be read");
    const std::uint32_t stride = format.blockAlign;
    std::vector<ChannelSums> sums(format.channels);
    // The loudness is measured on the same pieces.
    std::unique_ptr<LoudnessMeter> meter;
    if (loudness) {
        const std::uint32_t mask = place.formatBytes >= 24 && (place.format[0] | place.format[1] << 8) == kFormatTagExtensible
                                       ? static_cast<std::uint32_t>(place.format[20] | place.format[21] << 8 |
                                                                    place.format[22] << 16) |
                                             static_cast<std::uint32_t>(place.format[23]) << 24
                                       : 0;
        meter = std::make_unique<LoudnessMeter>(format.samplesPerSec,
                                                LoudnessMeter::ChannelWeights(format.channels, mask));
    }

    // Reading overlaps measuring: a thread reads the pieces ahead into a
    // ring of three, the levels are summed here, and a second thread sums
    // the second half of each piece's frames; when loudness is asked for,
    // this thread sums all the levels and K-weights, and the second one
    // finds the true peaks. A long file keeps both cores and the disk busy.
    struct Piece {
        std::unique_ptr<TransferMemory> memory; // kHeadBytes of room, then a request
        const std::uint8_t* bytes = nullptr;    // the first frame
        std::uint32_t frames = 0;
        bool last = false;
    };
    constexpr std::size_t kRing = 3;
    const std::int64_t frameCount = place.frameCount;
    // Audio that one request holds is read and measured on this thread
    // alone, in the same order and with the same sums: for a short file,
    // starting threads costs more than it saves.
    const std::int64_t dataStart = place.dataPosition + 8;
    const std::uint32_t sector = audio.GetSectorSize();
    const bool oneRequest = dataStart % sector + frameCount * stride < kReadBytes;
    // That one request is only as long as the sectors the audio lies in.
    const std::uint32_t requestBytes =
        oneRequest ? static_cast<std::uint32_t>((dataStart % sector + frameCount * stride) / sector + 1) * sector
                   : kReadBytes;
    Piece pieces[kRing];
    for (std::size_t i = 0; i < (oneRequest ? 1 : kRing); ++i) {
        pieces[i].memory = std::make_unique<TransferMemory>(std::size_t{kHeadBytes} + requestBytes);
        if (!pieces[i].memory->Data())
            return Refuse(problem, "no memory to read the audio into");
    }
    std::mutex lock;
    std::condition_variable changed;
    std::size_t read = 0, summed = 0, metered = 0;
    bool readFailed = false; // written by the reader, read once it has been joined
    const bool helped = !oneRequest && (meter || frameCount * stride > kReadBytes);
    // The frames of a piece that this thread sums the levels of.
    const auto ownFrames = [&](const Piece& piece) { return meter || !helped ? piece.frames : piece.frames / 2; };
    std::vector<ChannelSums> helperSums(format.channels);
    const auto readAll = [&] {
        const std::int64_t start = dataStart;
        std::int64_t next = start - start % audio.GetSectorSize();
        std::int64_t skipped = start - next; // bytes of the first request before the audio
        std::int64_t carried = 0;            // bytes of a frame begun in the piece before
        std::int64_t first = 0;
        for (std::size_t i = 0;; ++i) {
            {
                std::unique_lock<std::mutex> hold(lock);
                changed.wait(hold, [&] { return i < std::min(summed, helped ? metered : summed) + kRing; });
            }
            Piece& piece = pieces[i % kRing];
            std::uint8_t* request = piece.memory->Data() + kHeadBytes;
            if (carried > 0) {
                const Piece& before = pieces[(i + kRing - 1) % kRing];
                std::memcpy(request - carried, before.bytes + std::size_t{before.frames} * stride,
                            static_cast<std::size_t>(carried));
            }
            const std::int64_t got = audio.ReadAt(next, request, requestBytes);
            next += requestBytes;
            piece.bytes = request + skipped - carried;
            // A failed request measures nothing of its piece; the frames
            // counted so far then fall short and the measurement is refused.
            readFailed = got < 0;
            const std::int64_t present = readFailed ? 0 : std::max<std::int64_t>(0, got - skipped) + carried;
            piece.frames = static_cast<std::uint32_t>(std::min(present / stride, frameCount - first));
            first += piece.frames;
            piece.last = readFailed || got < requestBytes || first >= frameCount;
            carried = present - std::int64_t{piece.frames} * stride;
            skipped = 0;
            {
                std::lock_guard<std::mutex> hold(lock);
                read = i + 1;
            }
            changed.notify_all();
            if (piece.last)
                return;
        }
    };
    std::thread reader;
    if (oneRequest)
        readAll();
    else
        reader = std::thread(readAll);
    // The meter takes the frames [first, last) of a piece as floats, a few
    // thousand at a time, made while they are still in the cache; add gets
    // them with the index of the first. Frames of many channels go fewer at
    // a time, so that a header claiming 65,535 channels asks for 6 MiB of
    // floats, not a gigabyte; never fewer than the true peaks' priming takes.
    const std::uint32_t blockFrames =
        std::clamp<std::uint32_t>(32768u / format.channels, 2 * LoudnessMeter::kTruePeakHistory, 4096u);
    const auto toMeter = [&](const Piece& piece, std::uint32_t first, std::uint32_t last, std::vector<float>& floats,
                             auto add) {
        floats.resize(std::size_t{std::min(blockFrames, std::max(last - first, 1u))} * format.channels);
        for (std::uint32_t done = first; done < last; done += blockFrames) {
            const std::uint32_t frames = std::min(blockFrames, last - done);
            ToFloats(kind, bytesPerSample, piece.bytes + std::size_t{done} * stride, frames, stride,
                     format.channels, floats);
            add(floats.data(), done, frames);
        }
    };
    // The true peaks cost the most, so the second thread finds them in the
    // last three quarters of each piece, with a meter of its own primed with
    // the frames before, and this thread in the first quarter, beside the
    // levels and the K-weighting.
    constexpr std::uint32_t kHistory = LoudnessMeter::kTruePeakHistory;
    const auto peakSplit = [&](const Piece& piece) -> std::uint32_t {
        return !helped || piece.frames < 4 * kHistory ? piece.frames : std::max(kHistory, piece.frames / 4);
    };
    std::unique_ptr<LoudnessMeter> peakHelper;
    if (meter && helped)
        peakHelper = std::make_unique<LoudnessMeter>(format.samplesPerSec, std::vector<double>(format.channels, 1.0));
    const auto helpAll = [&] {
        std::vector<float> floats;
        for (std::size_t i = 0;; ++i) {
            {
                std::unique_lock<std::mutex> hold(lock);
                changed.wait(hold, [&] { return read > i; });
            }
            const Piece& piece = pieces[i % kRing];
            if (meter) {
                const std::uint32_t split = peakSplit(piece);
                bool primed = false;
                toMeter(piece, split < piece.frames ? split - kHistory : split, piece.frames, floats,
                        [&](const float* frames, std::uint32_t, std::uint32_t count) {
                            if (!primed) {
                                peakHelper->PrimeTruePeaks(frames, kHistory);
                                frames += std::size_t{kHistory} * format.channels;
                                count -= kHistory;
                                primed = true;
                            }
                            peakHelper->AddTruePeaks(frames, count);
                        });
            } else {
                const std::uint32_t own = ownFrames(piece);
                AddFrames(kind, bytesPerSample, piece.bytes + std::size_t{own} * stride, piece.frames - own,
                          stride, helperSums);
            }
            const bool last = piece.last;
            {
                std::lock_guard<std::mutex> hold(lock);
                metered = i + 1;
            }
            changed.notify_all();
            if (last)
                return;
        }
    };
    std::thread measurer;
    if (helped)
        measurer = std::thread(helpAll);
    std::int64_t first = 0;
    std::vector<float> floats;
    for (std::size_t i = 0;; ++i) {
        {
            std::unique_lock<std::mutex> hold(lock);
            changed.wait(hold, [&] { return read > i; });
        }
        const Piece& piece = pieces[i % kRing];
        AddFrames(kind, bytesPerSample, piece.bytes, ownFrames(piece), stride, sums);
        if (meter) {
            const std::uint32_t split = peakSplit(piece);
            toMeter(piece, 0, piece.frames, floats, [&](const float* frames, std::uint32_t at, std::uint32_t count) {
                meter->AddLoudness(frames, count);
                if (at < split)
                    meter->AddTruePeaks(frames, std::min(count, split - at));
            });
            // This thread's true peaks go on in the next piece after the
            // last frames of this one.
            if (!piece.last && split < piece.frames)
                toMeter(piece, piece.frames - kHistory, piece.frames, floats,
                        [&](const float* frames, std::uint32_t, std::uint32_t count) { meter->PrimeTruePeaks(frames, count); });
        }
        first += piece.frames;
        const bool last = piece.last;
        {
            std::lock_guard<std::mutex> hold(lock);
            summed = i + 1;
        }
        changed.notify_all();
        if (progress)
            progress(first, frameCount);
        if (last)
            break;
    }
    if (reader.joinable())
        reader.join();
    if (measurer.joinable())
        measurer.join();
    if (readFailed)
        return Refuse(problem, "the audio could not be read after frame " + FormatCount(first) + " of " +
                                   FormatCount(frameCount));
    if (first == 0)
        return Refuse(problem, "no audio data");
    if (first < frameCount)
        return Refuse(problem, "the file ended at frame " + FormatCount(first) + " of " + FormatCount(frameCount) +
                                   " while it was measured");
    for (std::size_t c = 0; c < sums.size(); ++c)
        sums[c].Merge(helperSums[c]);

    report.frames = first;
    report.sampleRate = format.samplesPerSec;
    report.bits = format.bitsPerSample;
    report.isFloat = kind == SampleKind::Float32 || kind == SampleKind::Float64;
    const auto count = static_cast<double>(first);
    for (const ChannelSums& s : sums) {
        ChannelLevels levels;
        if (report.isFloat) {
            // The mean of the samples taken in; none taken is silence.
            const double kept = count - static_cast<double>(s.nonFinite);
            levels.peak = s.peak;
            levels.rms = kept > 0 ? std::sqrt(s.squares / kept) : 0;
            levels.dcOffset = kept > 0 ? s.sumOfFloats / kept : 0;
            levels.overFullScale = s.overFullScale;
            levels.nonFinite = s.nonFinite;
        } else {
            const double fullScale = std::ldexp(1.0, format.bitsPerSample - 1);
            const double squares = kind == SampleKind::Signed32
                                       ? s.squares
                                       : std::ldexp(static_cast<double>(s.squaresHigh), 64) + static_cast<double>(s.squaresLow);
            levels.peak = std::max(-static_cast<double>(s.lowest), static_cast<double>(s.highest)) / fullScale;
            levels.rms = std::sqrt(squares / count) / fullScale;
            levels.dcOffset = static_cast<double>(s.sum) / count / fullScale;
        }
        levels.fullScale = s.fullScale;
        report.channels.push_back(levels);
    }
    if (meter) {
        if (peakHelper)
            meter->MergeTruePeaks(*peakHelper);
        report.hasLoudness = true;
        report.loudness = meter->Result();
    }
    return true;
}

std::uint64_t CountNonFinite(const LevelReport& report)
{
    std::uint64_t count = 0;
    for (const ChannelLevels& levels : report.channels)
        count += levels.nonFinite;
    return count;
}
