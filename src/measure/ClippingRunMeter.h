#pragma once

#include "measure/LevelReport.h"
#include "measure/Meter.h"
#include "measure/MeterSettings.h"
#include "measure/SampleFormat.h"
#include "measure/VectorPath.h"

#include <vector>

// Each channel's runs of equal samples at its own peak magnitude, of
// either sign: audio clipped and then turned down or normalised keeps its
// flat tops below full scale, where counts of samples at full scale miss
// them. The peak is not known before the end, so the runs are counted at
// the highest magnitude so far and counted anew when a higher one comes.
// Compares the samples exactly; runs on every frame in order.
class ClippingRunMeter : public Meter {
public:
    ClippingRunMeter(const SampleFormat& format, const MeterSettings& settings);

    MeterInput Input() const override { return MeterInput::Bytes; }
    void AddBytes(const RawFrames& frames) override;
    void Finish(LevelReport& report) override;

private:
    struct Channel {
        double peak = 0;              // the highest magnitude so far
        double runValue = 0;          // the sample of the run at the peak under way
        std::uint64_t runLength = 0;  // 0 when none is under way
        ClippingRuns figures;
    };
    template <typename Samples>
    void AddChannel(const Samples& samples, Channel& channel) const;
    std::uint32_t AddGroups(const RawFrames& frames);
    std::uint32_t PassByUnchanged(const RawFrames& frames, std::uint32_t at) const;
    void EndRun(Channel& channel) const;

    SampleFormat format;
    std::uint32_t shortestRun = 1;
    VectorPath path;
    std::vector<Channel> channels;
};
