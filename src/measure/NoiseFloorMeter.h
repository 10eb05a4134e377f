#pragma once

#include "measure/ChannelSamples.h"
#include "measure/LevelReport.h"
#include "measure/Meter.h"
#include "measure/SampleFormat.h"
#include "measure/VectorPath.h"

#include <vector>

// Each channel's noise floor: the RMS of its quietest window of 0.5 s, the
// windows starting every 0.1 s from the first frame. A window of digital
// silence throughout is a gap in the recording, not its noise, and is
// passed over. Sums the squares of each step in frame order and a window's
// as the sum of its steps, so the figure is the same however the frames
// come; runs on every frame in order.
class NoiseFloorMeter : public Meter {
public:
    explicit NoiseFloorMeter(const SampleFormat& format);

    MeterInput Input() const override { return MeterInput::Bytes; }
    void AddBytes(const RawFrames& frames) override;
    void Finish(LevelReport& report) override;

private:
    struct Step {
        double squares[kSumLanes] = {}; // by a frame's place in the step
        bool sound = false;             // a sample that is not 0
    };
    struct Channel {
        Step current;
        Step last[kNoiseWindowSteps]; // the steps before, the newest at (steps - 1) % kNoiseWindowSteps
        double quietest = -1;         // the least sum of squares of a window; -1 for none yet
    };
    template <typename Samples>
    void AddChannel(const Samples& samples, Channel& channel) const;
    void AddCodes(const RawFrames& part);
    void EndStep(Channel& channel) const;

    SampleFormat format;
    VectorPath path;
    std::uint32_t stepFrames = 1;
    bool exactCodes = false; // packed 16-bit frames, summed as integers
    std::uint32_t stepDone = 0; // frames of the current step so far
    std::uint64_t steps = 0;    // whole steps so far
    std::vector<Channel> channels;
};
