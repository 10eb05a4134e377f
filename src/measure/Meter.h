#pragma once

#include <cstdint>
#include <memory>

struct LevelReport;

// Frames decoded for the meters: floats at full scale ±1.0, interleaved,
// samples that are no level already silence.
struct FloatFrames {
    const float* samples = nullptr;
    std::uint32_t frames = 0;
    std::uint32_t channels = 0;
};

// Frames as they lie in the file, for a meter that must be exact.
struct RawFrames {
    const std::uint8_t* data = nullptr; // the first byte of the first frame
    std::uint32_t frames = 0;
    std::uint32_t stride = 0; // bytes a frame
};

enum class MeterInput { Floats, Bytes };

// The most frames a meter may ask to be primed with: the reach of the
// true-peak filter.
constexpr std::uint32_t kMostPrimingFrames = 11;

// One figure or a few, measured in the one pass over a file's audio (see
// MeasurePass): a state per channel fed frames in blocks of any length,
// and its figures into the report at the end. A meter never reads a file,
// never prints and never knows which other meters run. The pass owns it
// and feeds it from one thread at a time.
//
// A meter's share of the frames is every frame, in order, unless it is
// chosen with a helper share: then a twin of it (MakeTwin) measures the
// later part of each piece of audio on the helper thread, primed with the
// frames before that part, and Merge takes the twin's sums in at the end.
class Meter {
public:
    virtual ~Meter() = default;

    // Input
    virtual MeterInput Input() const = 0;
    // The meter's share of the frames, decoded or raw as Input says.
    virtual void Add(const FloatFrames&) {}
    virtual void AddBytes(const RawFrames&) {}

    // Sharing with the helper thread
    // A meter of the same kind for the helper's part; null when the work
    // can't be done in parts.
    virtual std::unique_ptr<Meter> MakeTwin() const { return nullptr; }
    // The decoded frames just before a part that must be seen first (a
    // filter's reach; at most kMostPrimingFrames), and the priming with
    // them: the twin is primed before its part, and this meter after its
    // own part where a piece goes on.
    virtual std::uint32_t PrimingFrames() const { return 0; }
    virtual void Prime(const FloatFrames&) {}
    // Takes in the figures of the twin that MakeTwin made.
    virtual void Merge(const Meter&) {}

    // Results
    // The meter's figures into the report, whose frames, rate and format
    // the pass has filled in; after every frame has been added.
    virtual void Finish(LevelReport& report) = 0;
};
