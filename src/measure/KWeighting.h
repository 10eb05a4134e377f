#pragma once

#include "measure/VectorPath.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// Decodes frames [first, first + count) of the run being added, as floats
// at full scale, interleaved, into out.
using FloatSource = std::function<void(std::size_t first, std::uint32_t count, float* out)>;

// The K-weighted energy of a programme, step by step of 100 ms: BS.1770's
// two filters (a high shelf of +4 dB above about 1.7 kHz, a high pass at
// about 38 Hz) on every channel, the squares of their output summed over
// each step and weighted by channel.
//
// Each sample's filter waits on the one before, so a channel alone keeps
// the processor mostly idle. A long run is therefore cut into segments
// that are filtered side by side, a channel of a segment in each of the
// vector lanes: every segment but the first starts its filters from rest a
// quarter of a second before its frames and counts nothing of that
// warm-up. The filters' poles forget a state by e^-60 in that time, so a
// segment's figures are the figures of the whole to within rounding (well
// under 10^-12 of a step's energy), and the cuts depend on the run alone,
// so that the same runs give the same figures to the last bit.
class KWeighting {
public:
    KWeighting(std::uint32_t sampleRate, std::vector<double> weights, VectorPath path);

    // The run of frameCount frames after those added before. The weighted
    // energy of each step it ends goes to endedSteps, in order.
    void Add(const FloatSource& source, std::size_t frameCount, std::vector<double>& endedSteps);
    // Whether a frame's channels fill whole lanes (1, 2, 4 or 8 channels):
    // then the lanes read frames where they lie, and AddCodes may be used.
    bool FillsLanes() const;
    // The same as Add of packed little-endian 16-bit codes, read in place:
    // the figures of their floats to the last bit, with no floats made.
    void AddCodes(const std::uint8_t* codes, std::size_t frameCount, std::vector<double>& endedSteps);

    std::uint32_t StepFrames() const { return stepFrames; }

private:
    struct Segment {
        std::size_t warmFrom, counted, end; // frames of the run: warm-up from, counted from, end
        std::size_t at = 0;                 // the next frame to filter
    };
    void Begin(std::size_t frameCount);
    template <typename Prepare, typename Filter>
    void FilterRun(std::size_t slice, Prepare prepare, Filter filter);
    void End(std::size_t frameCount, std::vector<double>& endedSteps);
    std::size_t NextEvent(const Segment& segment, std::size_t position) const;
    void TakeEnergy(std::size_t segment, std::size_t position);
    void SaveStates(std::size_t segment);

    std::vector<double> weights;
    VectorPath path;
    Biquad shelf{}, highPass{};
    std::uint32_t stepFrames;
    std::size_t warmUpFrames;
    std::size_t channels;
    std::vector<std::array<double, 4>> states; // each channel's filter states between runs
    std::uint32_t framesInStep = 0; // of the step the last run ended in
    double stepEnergy = 0;          // and its weighted energy so far
    // The run being added: its segments, their lanes (segment by segment,
    // channel by channel, in groups of kWeightingLanes), the weighted
    // energy of each step it touches.
    std::vector<Segment> segments;
    std::vector<KWeightingLanes> lanes;
    std::vector<double> stepEnergies;
    std::vector<float> decoded, interleaved, silence;
    std::vector<std::uint8_t> silentCodes;
};
