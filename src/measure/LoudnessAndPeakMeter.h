#pragma once

#include "measure/Loudness.h"
#include "measure/Meter.h"
#include "measure/SampleFormat.h"

// The programme's loudness and each channel's true peak, through a
// LoudnessMeter weighted by the format's speakers. The K-weighting must
// see every frame in order; the true peaks are the work it shares with a
// twin, which finds those of its part after priming the filter with the
// frames before.
class LoudnessAndPeakMeter : public Meter {
public:
    explicit LoudnessAndPeakMeter(const SampleFormat& format);

    MeterInput Input() const override { return MeterInput::Floats; }
    void Add(const FloatFrames& block) override;
    void AddEveryFrame(const FloatFrames& block) override;
    std::unique_ptr<Meter> MakeTwin() const override;
    std::uint32_t PrimingFrames() const override { return LoudnessMeter::kTruePeakHistory; }
    void Prime(const FloatFrames& block) override;
    void Merge(const Meter& twin) override;
    void Finish(LevelReport& report) override;

private:
    SampleFormat format;
    LoudnessMeter meter;
};
