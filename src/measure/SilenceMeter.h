#pragma once

#include "measure/LevelReport.h"
#include "measure/Meter.h"
#include "measure/MeterSettings.h"
#include "measure/SampleFormat.h"
#include "measure/VectorPath.h"

#include <vector>

// Each channel's silence: the silent lead and tail, the silent runs between
// them (the longest, and those that last at least the minimum, with where
// they start) and whether every sample is exactly 0. Compares the samples
// as the file holds them; runs on every frame in order.
class SilenceMeter : public Meter {
public:
    SilenceMeter(const SampleFormat& format, const MeterSettings& settings);

    MeterInput Input() const override { return MeterInput::Bytes; }
    void AddBytes(const RawFrames& frames) override;
    void Finish(LevelReport& report) override;

private:
    struct Channel {
        std::int64_t firstSound = -1; // the first frame whose sample is not silent
        std::int64_t lastSound = -1;  // the last one so far
        ChannelSilence figures;
        bool nonZero = false;
    };
    template <typename Samples>
    void AddChannel(const Samples& samples, Channel& channel, std::int64_t firstFrame) const;
    std::uint32_t AddGroups(const RawFrames& frames);
    std::uint32_t PassByUnchanged(const RawFrames& frames, std::uint32_t at, std::int32_t loudCode);

    SampleFormat format;
    MeterSettings settings;
    VectorPath path;
    double threshold = 0;        // a fraction of full scale
    std::int64_t minimumFrames = 1;
    std::int64_t framesBefore = 0; // frames of the blocks before this one
    std::vector<Channel> channels;
};
