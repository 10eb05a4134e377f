#pragma once

#include "measure/ChannelSamples.h"
#include "measure/LevelReport.h"
#include "measure/Meter.h"
#include "measure/SampleFormat.h"
#include "measure/VectorPath.h"

#include <vector>

// Each stereo pair of channels (1-2, 3-4, ...; an odd last channel has
// none): the correlation of the whole file, Σlr / √(Σl² Σr²), its lowest
// over whole blocks of 0.4 s from the first frame, and whether the two
// channels are the same samples (dual mono) or each the negative of the
// other. Sums each block in frame order and the whole as the sum of its
// blocks; runs on every frame in order.
class StereoPairMeter : public Meter {
public:
    explicit StereoPairMeter(const SampleFormat& format);

    MeterInput Input() const override { return MeterInput::Bytes; }
    void AddBytes(const RawFrames& frames) override;
    void Finish(LevelReport& report) override;

private:
    struct Sums {
        double both = 0, left = 0, right = 0; // Σlr, Σl², Σr²
    };
    // A block's sums, by a frame's place in the block.
    struct LaneSums {
        double both[kSumLanes] = {}, left[kSumLanes] = {}, right[kSumLanes] = {};
    };
    struct Pair {
        LaneSums block;
        Sums whole;
        double lowest = 2; // above any correlation: none yet
        bool identical = true, inverse = true, sound = false;
    };
    static Sums Folded(const LaneSums& lanes);
    template <typename Samples>
    void AddPair(const Samples& left, const Samples& right, Pair& pair) const;

    void AddCodes(const RawFrames& part);

    SampleFormat format;
    VectorPath path;
    std::uint32_t blockFrames = 1;
    bool exactCodes = false; // packed 16-bit frames in pairs, summed as integers
    std::uint32_t blockDone = 0;
    std::vector<Pair> pairs;
};
