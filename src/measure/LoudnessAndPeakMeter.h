#pragma once

#include "measure/Loudness.h"
#include "measure/Meter.h"
#include "measure/SampleFormat.h"

// The programme's loudness and each channel's true peak, through two
// LoudnessMeters weighted by the format's speakers, each doing half of its
// work. The loudness must see every frame in order: it takes each piece's
// raw frames whole and decodes them itself, so that its K-weighting can
// filter long segments of the piece side by side. The true peaks are the
// work that can be shared with a twin, which finds those of its part after
// priming the filter with the frames before.
class ProgrammeLoudnessMeter : public Meter {
public:
    explicit ProgrammeLoudnessMeter(const SampleFormat& format);

    MeterInput Input() const override { return MeterInput::Bytes; }
    void AddBytes(const RawFrames& frames) override;
    void Finish(LevelReport& report) override;

private:
    SampleFormat format;
    LoudnessMeter meter;
};

class TruePeakMeter : public Meter {
public:
    explicit TruePeakMeter(const SampleFormat& format);

    MeterInput Input() const override { return MeterInput::Floats; }
    void Add(const FloatFrames& block) override;
    std::unique_ptr<Meter> MakeTwin() const override;
    std::uint32_t PrimingFrames() const override { return LoudnessMeter::kTruePeakHistory; }
    void Prime(const FloatFrames& block) override;
    void Merge(const Meter& twin) override;
    void Finish(LevelReport& report) override;

private:
    SampleFormat format;
    LoudnessMeter meter;
};
