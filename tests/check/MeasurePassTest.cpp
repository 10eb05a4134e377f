// The measuring pass apart from the figures of its meters: it hands each
// meter every frame once, in order where it must, and primes each part
// with the frames just before it, over reads on its threads.
#include "measure/AudioMd5.h"
#include "measure/AudioPlace.h"
#include "measure/Levels.h"
#include "measure/MeasurePass.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

// Frames whose every sample holds the frame's index, so that a meter can
// tell which frames it was given.
class RecordingMeter : public Meter {
public:
    explicit RecordingMeter(std::uint32_t priming) : priming(priming) {}

    MeterInput Input() const override { return MeterInput::Floats; }
    void Add(const FloatFrames& block) override
    {
        const std::int64_t first = FirstOf(block);
        if (primedUpTo >= 0) {
            EXPECT_EQ(first, primedUpTo) << "the frames added after priming follow the frames primed with";
        }
        primedUpTo = -1;
        if (!added.empty() && added.back().second == first)
            added.back().second += block.frames;
        else
            added.emplace_back(first, first + block.frames);
    }
    std::unique_ptr<Meter> MakeTwin() const override { return std::make_unique<RecordingMeter>(priming); }
    std::uint32_t PrimingFrames() const override { return priming; }
    void Prime(const FloatFrames& block) override
    {
        EXPECT_EQ(block.frames, priming);
        primedUpTo = FirstOf(block) + block.frames;
    }
    void Merge(const Meter& twin) override
    {
        const auto& other = static_cast<const RecordingMeter&>(twin);
        added.insert(added.end(), other.added.begin(), other.added.end());
        twins += 1 + other.twins;
    }
    void Finish(LevelReport&) override {}

    std::uint32_t priming;
    std::vector<std::pair<std::int64_t, std::int64_t>> added; // [first, last) of each run of frames
    std::int64_t primedUpTo = -1;
    int twins = 0;

private:
    // The frame index every sample of the block's frames holds, checked.
    static std::int64_t FirstOf(const FloatFrames& block)
    {
        const auto first = static_cast<std::int64_t>(block.samples[0]);
        bool held = true;
        for (std::size_t i = 0; i < std::size_t{block.frames} * block.channels; ++i)
            held = held && block.samples[i] == static_cast<float>(first + std::int64_t(i / block.channels));
        EXPECT_TRUE(held) << "frames from " << first << " out of order";
        return first;
    }
};

// Takes the raw frames: the first sample of each holds its index. Checks
// that it gets every frame once, in order, on a thread other than the
// test's.
class ByteRecordingMeter : public Meter {
public:
    MeterInput Input() const override { return MeterInput::Bytes; }
    void AddBytes(const RawFrames& frames) override
    {
        for (std::uint32_t f = 0; f < frames.frames; ++f)
            inOrder = inOrder && FloatAt<float>(frames.data + std::size_t{f} * frames.stride) == static_cast<float>(next++);
        elsewhere = elsewhere || std::this_thread::get_id() != testThread;
    }
    void Finish(LevelReport&) override {}

    std::int64_t next = 0;
    bool inOrder = true, elsewhere = false;
    std::thread::id testThread = std::this_thread::get_id();
};

// The raw bytes of the pass, as they came.
class RawRecorder : public RawAudioSink {
public:
    void AddRaw(const std::uint8_t* bytes, std::size_t count) override { raw.append(reinterpret_cast<const char*>(bytes), count); }
    std::string raw;
};

} // namespace

// Three channels of 32-bit floats: twelve bytes a frame, so that reads of
// 4 MiB end inside frames, over more than four reads. A meter that shares
// three quarters of each piece, one that shares half, one that shares
// nothing: each gets every frame once, itself or through its twin, and
// each part follows the frames it was primed with. The raw bytes of every
// frame go to their own sink too, once and in order.
TEST(MeasurePass, EveryMeterGetsEveryFrameOnceAndEachPartItsPriming)
{
    constexpr std::uint32_t kFrames = 17 * 1024 * 1024 / 12 + 5;
    std::vector<float> samples(std::size_t{kFrames} * 3);
    for (std::uint32_t i = 0; i < kFrames; ++i)
        std::fill_n(samples.begin() + std::size_t{i} * 3, 3, static_cast<float>(i));
    TempDir dir;
    const WideString path = dir.Write("index.wav", FloatWave(samples, 3, 48000));
    AudioPlace place;
    SampleFormat format;
    std::string problem;
    FileLayout layout(path, kLevelsReading);
    ASSERT_TRUE(FindAudio(layout, place, problem)) << problem;
    ASSERT_TRUE(ReadSampleFormat(place.format, place.formatBytes, format, problem)) << problem;

    const struct {
        std::uint32_t priming;
        HelperShare share;
    } cases[] = {{11, HelperShare::ThreeQuarters}, {0, HelperShare::Half}, {5, HelperShare::None}};
    std::vector<ChosenMeter> meters;
    std::vector<RecordingMeter*> recorders;
    for (const auto& c : cases) {
        auto meter = std::make_unique<RecordingMeter>(c.priming);
        recorders.push_back(meter.get());
        meters.push_back({std::move(meter), c.share});
    }
    auto whole = std::make_unique<ByteRecordingMeter>();
    ByteRecordingMeter& wholeOnHelper = *whole;
    meters.push_back({std::move(whole), HelperShare::Whole});
    std::int64_t lastDone = 0, frames = 0;
    const auto progress = [&](std::int64_t done, std::int64_t total) {
        EXPECT_GT(done, lastDone);
        EXPECT_EQ(total, kFrames);
        lastDone = done;
    };
    RawRecorder raw;
    ASSERT_TRUE(RunMeasurePass(path, place, format, meters, progress, frames, problem, &raw)) << problem;
    ASSERT_EQ(raw.raw.size(), samples.size() * sizeof(float));
    EXPECT_EQ(std::memcmp(raw.raw.data(), samples.data(), raw.raw.size()), 0);
    EXPECT_EQ(frames, kFrames);
    EXPECT_EQ(lastDone, kFrames);
    EXPECT_EQ(wholeOnHelper.next, kFrames);
    EXPECT_TRUE(wholeOnHelper.inOrder);
    EXPECT_TRUE(wholeOnHelper.elsewhere);
    for (std::size_t i = 0; i < recorders.size(); ++i) {
        SCOPED_TRACE(i);
        RecordingMeter& meter = *recorders[i];
        EXPECT_EQ(meter.twins, cases[i].share == HelperShare::None ? 0 : 1);
        std::sort(meter.added.begin(), meter.added.end());
        std::int64_t next = 0;
        for (const auto& [first, last] : meter.added) {
            EXPECT_EQ(first, next);
            next = last;
        }
        EXPECT_EQ(next, kFrames);
    }
}

// The MD5 of the audio in the levels' pass, fed on its own thread with
// whole frames and then the few bytes of a last partial one, is the MD5 of
// every byte of the data chunk: the same as the hash alone, which reads the
// body as bytes, and as the bytes hashed here. One read's length and
// several.
TEST(MeasurePass, Md5BesideTheLevelsIsTheMd5OfEveryDataByte)
{
    TempDir dir;
    for (const std::size_t bytes : {std::size_t{6 * 100 + 5}, std::size_t{9 * 1024 * 1024 + 5}}) {
        SCOPED_TRACE(bytes);
        std::string audio(bytes, '\0');
        std::uint32_t seed = 7;
        for (char& byte : audio) {
            seed = seed * 1664525u + 1013904223u;
            byte = static_cast<char>(seed >> 24);
        }
        const WideString path = dir.Write("odd.wav", Wave(FormatBody(1, 2, 48000, 24), audio));
        platform::Md5 here;
        platform::Md5Digest expected{};
        ASSERT_TRUE(here.Add(reinterpret_cast<const std::uint8_t*>(audio.data()), audio.size()) && here.Finish(expected));

        AudioMd5 besideLevels, alone;
        LevelReport report;
        std::string problem;
        FileLayout layout(path, kLevelsReading);
        ASSERT_TRUE(MeasureLevels(layout, report, problem, false, {}, {}, &besideLevels)) << problem;
        ASSERT_TRUE(besideLevels.IsComputed()) << besideLevels.GetProblem();
        EXPECT_EQ(besideLevels.GetDigest(), expected);
        FileLayout again(path, kLevelsReading);
        ASSERT_TRUE(HashAudio(again, alone, problem)) << problem;
        EXPECT_EQ(alone.GetDigest(), expected);
    }
}
