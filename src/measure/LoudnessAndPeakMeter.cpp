#include "measure/LoudnessAndPeakMeter.h"

#include "measure/LevelReport.h"

static_assert(LoudnessMeter::kTruePeakHistory <= kMostPrimingFrames);

ProgrammeLoudnessMeter::ProgrammeLoudnessMeter(const SampleFormat& format)
    : format(format), meter(format.sampleRate, LoudnessMeter::ChannelWeights(format.channels, format.channelMask))
{
}

// Packed 16-bit codes that fill the filters' lanes are read where they lie.
void ProgrammeLoudnessMeter::AddBytes(const RawFrames& frames)
{
    if (format.kind == SampleKind::Signed16 && format.IsPacked() && meter.TakesCodes()) {
        meter.AddLoudnessCodes(frames.data, frames.frames);
        return;
    }
    meter.AddLoudness(
        [&](std::size_t first, std::uint32_t count, float* out) {
            DecodeFloats(format, frames.data + first * frames.stride, count, out);
        },
        frames.frames);
}

// The true peaks are TruePeakMeter's: only the loudness is taken.
void ProgrammeLoudnessMeter::Finish(LevelReport& report)
{
    const LoudnessMeter::Figures figures = meter.Result();
    report.hasLoudness = true;
    report.loudness.integrated = figures.integrated;
    report.loudness.range = figures.range;
    report.loudness.momentaryMax = figures.momentaryMax;
    report.loudness.shortTermMax = figures.shortTermMax;
}

TruePeakMeter::TruePeakMeter(const SampleFormat& format)
    : format(format), meter(format.sampleRate, LoudnessMeter::ChannelWeights(format.channels, format.channelMask))
{
}

void TruePeakMeter::Add(const FloatFrames& block)
{
    meter.AddTruePeaks(block.samples, block.frames);
}

std::unique_ptr<Meter> TruePeakMeter::MakeTwin() const
{
    return std::make_unique<TruePeakMeter>(format);
}

void TruePeakMeter::Prime(const FloatFrames& block)
{
    meter.PrimeTruePeaks(block.samples, block.frames);
}

void TruePeakMeter::Merge(const Meter& twin)
{
    meter.MergeTruePeaks(static_cast<const TruePeakMeter&>(twin).meter);
}

void TruePeakMeter::Finish(LevelReport& report)
{
    report.loudness.truePeak = meter.Result().truePeak;
}
