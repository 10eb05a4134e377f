#pragma once

#include "measure/Meter.h"
#include "measure/SampleFormat.h"
#include "measure/VectorPath.h"

#include <vector>

struct LevelSums;

// Peak, RMS, DC offset and the samples at full scale of each channel, and
// the float samples that are no level, counted apart. It takes the raw
// bytes, so that integer samples of up to 24 bits are summed exactly; its
// work is shared in parts with a twin, whose sums Merge adds.
class LevelMeter : public Meter {
public:
    explicit LevelMeter(const SampleFormat& format);
    ~LevelMeter() override;

    MeterInput Input() const override { return MeterInput::Bytes; }
    void AddBytes(const RawFrames& bytes) override;
    std::unique_ptr<Meter> MakeTwin() const override;
    void Merge(const Meter& twin) override;
    void Finish(LevelReport& report) override;

private:
    SampleFormat format;
    VectorPath path;
    std::vector<LevelSums> sums; // one a channel
};
