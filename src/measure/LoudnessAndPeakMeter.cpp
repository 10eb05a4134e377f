#include "measure/LoudnessAndPeakMeter.h"

#include "measure/LevelReport.h"

static_assert(LoudnessMeter::kTruePeakHistory <= kMostPrimingFrames);

LoudnessAndPeakMeter::LoudnessAndPeakMeter(const SampleFormat& format)
    : format(format), meter(format.sampleRate, LoudnessMeter::ChannelWeights(format.channels, format.channelMask))
{
}

void LoudnessAndPeakMeter::Add(const FloatFrames& block)
{
    meter.AddTruePeaks(block.samples, block.frames);
}

void LoudnessAndPeakMeter::AddEveryFrame(const FloatFrames& block)
{
    meter.AddLoudness(block.samples, block.frames);
}

std::unique_ptr<Meter> LoudnessAndPeakMeter::MakeTwin() const
{
    return std::make_unique<LoudnessAndPeakMeter>(format);
}

void LoudnessAndPeakMeter::Prime(const FloatFrames& block)
{
    meter.PrimeTruePeaks(block.samples, block.frames);
}

void LoudnessAndPeakMeter::Merge(const Meter& twin)
{
    meter.MergeTruePeaks(static_cast<const LoudnessAndPeakMeter&>(twin).meter);
}

void LoudnessAndPeakMeter::Finish(LevelReport& report)
{
    report.hasLoudness = true;
    report.loudness = meter.Result();
}
