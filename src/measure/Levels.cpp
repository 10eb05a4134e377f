#include "measure/Levels.h"

#include "base/TextFormat.h"
#include "measure/AudioMd5.h"
#include "measure/AudioPlace.h"
#include "measure/ClippingRunMeter.h"
#include "measure/CodeLanes.h"
#include "measure/LevelMeter.h"
#include "measure/LoudnessAndPeakMeter.h"
#include "measure/NoiseFloorMeter.h"
#include "measure/SampleFormat.h"
#include "measure/SilenceMeter.h"
#include "measure/StereoPairMeter.h"

#include <cmath>
#include <limits>

namespace {

bool RefuseLevels(std::string& problem, const std::string& why)
{
    problem = why;
    return false;
}

} // namespace

double ToDecibels(double fraction)
{
    return fraction > 0 ? 20 * std::log10(fraction) : -std::numeric_limits<double>::infinity();
}

bool MeasureLevels(FileLayout& layout, LevelReport& report, std::string& problem, bool loudness,
                   const MeasureProgress& progress, const MeterSettings& settings, AudioMd5* md5)
{
    report = LevelReport();
    if (!layout.IsExistingFile())
        return RefuseLevels(problem, "no such file");
    AudioPlace place;
    if (!FindAudio(layout, place, problem))
        return false;
    SampleFormat format;
    if (!ReadSampleFormat(place.format, place.formatBytes, format, problem))
        return false;
    if (place.dataPosition < 0)
        return RefuseLevels(problem, "no data chunk");
    // The K-weighting's high shelf turns at about 1.7 kHz. Below 8 kHz its
    // corner crowds the Nyquist frequency, where the bilinear transform
    // bends it out of shape (at 3.4 kHz and below there is no filter at
    // all), so the figure would no longer be a loudness.
    if (loudness && format.sampleRate < kLowestLoudnessRate)
        return RefuseLevels(problem, "loudness is measured at " + FormatCount(kLowestLoudnessRate) +
                                         " Hz and above, not at " + FormatCount(format.sampleRate) + " Hz");

    // The meters of this measurement, and the thread each works on, so
    // that the two have about as much to do. The clipping runs, the noise
    // floor and the stereo pairs go whole to the helper; the silence stays
    // on this thread, and so do the levels, but for packed 16-bit codes,
    // whose sums cost so little beside the silence's runs that the helper
    // takes them too. With the loudness, the K-weighting stays on this
    // thread, which reads every frame in order; the helper finds most of the
    // true peaks, the costliest work of all, and shares the levels of other
    // samples.
    const HelperShare levelShare = TakesCodeLanes(format) ? HelperShare::Whole
                                   : loudness               ? HelperShare::Half
                                                            : HelperShare::None;
    std::vector<ChosenMeter> meters;
    meters.push_back({std::make_unique<LevelMeter>(format), levelShare});
    if (loudness) {
        meters.push_back({std::make_unique<ProgrammeLoudnessMeter>(format), HelperShare::None});
        meters.push_back({std::make_unique<TruePeakMeter>(format), HelperShare::ThreeQuarters});
    }
    meters.push_back({std::make_unique<SilenceMeter>(format, settings), HelperShare::None});
    meters.push_back({std::make_unique<ClippingRunMeter>(format, settings), HelperShare::Whole});
    meters.push_back({std::make_unique<NoiseFloorMeter>(format), HelperShare::Whole});
    meters.push_back({std::make_unique<StereoPairMeter>(format), HelperShare::Whole});

    std::int64_t frames = 0;
    AudioMd5* hashed = md5 && md5->Begin(place, layout.GetFileSize()) ? md5 : nullptr;
    if (!RunMeasurePass(layout.GetPath(), place, format, meters, progress, frames, problem, hashed, layout.GetMemory()))
        return false;
    if (hashed)
        hashed->Finish(layout, place);
    report.frames = frames;
    report.sampleRate = format.sampleRate;
    report.bits = format.bits;
    report.isFloat = format.IsFloat();
    for (ChosenMeter& chosen : meters)
        chosen.meter->Finish(report);
    return true;
}

std::uint64_t CountNonFinite(const LevelReport& report)
{
    std::uint64_t count = 0;
    for (const ChannelLevels& levels : report.channels)
        count += levels.nonFinite;
    return count;
}
