#include "measure/KWeighting.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr double kPi = 3.14159265358979323846;
// The most floats of the run's lanes decoded at a time, and the most steps.
constexpr std::size_t kLaneFloats = 16384;
constexpr std::size_t kMostSteps = 512;

// Lays a segment's decoded frames into its lanes, frame i's samples side by
// side from to[i * kWeightingLanes], and silence from frame have to frame
// steps.
void LayFrames(const float* from, float* to, std::size_t channels, std::size_t have, std::size_t steps)
{
    for (std::size_t i = 0; i < have; ++i)
        std::memcpy(to + i * kWeightingLanes, from + i * channels, channels * sizeof(float));
    for (std::size_t i = have; i < steps; ++i)
        std::fill_n(to + i * kWeightingLanes, channels, 0.0f);
}

} // namespace

// The two filters are worked out for the sample rate from their analogue
// prototypes. The high pass's two poles lie at about 38 Hz: in a quarter
// of a second a state fades by e^(-2π · 38 / 4), whatever the rate.
KWeighting::KWeighting(std::uint32_t sampleRate, std::vector<double> channelWeights, VectorPath path)
    : weights(std::move(channelWeights)), path(path), stepFrames(std::max<std::uint32_t>(1, sampleRate / 10)),
      warmUpFrames(std::max<std::size_t>(1, sampleRate / 4)), channels(weights.size()),
      states(weights.size(), std::array<double, 4>{})
{
    const double rate = sampleRate > 0 ? sampleRate : 48000;
    {
        const double f0 = 1681.974450955533, gain = 3.999843853973347, q = 0.7071752369554196;
        const double k = std::tan(kPi * f0 / rate);
        const double vh = std::pow(10.0, gain / 20), vb = std::pow(vh, 0.4996667741545416);
        const double a0 = 1 + k / q + k * k;
        shelf = {(vh + vb * k / q + k * k) / a0, 2 * (k * k - vh) / a0, (vh - vb * k / q + k * k) / a0,
                 2 * (k * k - 1) / a0, (1 - k / q + k * k) / a0};
    }
    {
        const double f0 = 38.13547087602444, q = 0.5003270373238773;
        const double k = std::tan(kPi * f0 / rate);
        const double a0 = 1 + k / q + k * k;
        highPass = {1, -2, 1, 2 * (k * k - 1) / a0, (1 - k / q + k * k) / a0};
    }
}

// As many segments as fill the lanes, each at least four warm-ups long
// (its warm-up then costs a quarter of its frames at most), and equally
// long, warm-up included; the last takes what the division leaves, and
// ends last. Segment 0 goes on from the filters' states; the others start
// from rest.
void KWeighting::Begin(std::size_t frameCount)
{
    const std::size_t most = std::max<std::size_t>(1, kWeightingLanes / channels);
    const std::size_t count = std::clamp<std::size_t>(frameCount / (4 * warmUpFrames), 1, most);
    const std::size_t length = (frameCount + (count - 1) * warmUpFrames) / count;
    segments.clear();
    segments.push_back({0, 0, count == 1 ? frameCount : length});
    for (std::size_t s = 1; s < count; ++s) {
        const std::size_t counted = segments.back().end;
        segments.push_back({counted - warmUpFrames, counted, s + 1 == count ? frameCount : counted + length - warmUpFrames});
    }
    for (Segment& segment : segments)
        segment.at = segment.warmFrom;
    lanes.assign((count * channels + kWeightingLanes - 1) / kWeightingLanes, KWeightingLanes{});
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t k = 0; k < 4; ++k)
            lanes[c / kWeightingLanes].z[k][c % kWeightingLanes] = states[c][k];
    }
    stepEnergies.assign((frameCount + framesInStep) / stepFrames + 1, 0.0);
    stepEnergies[0] = stepEnergy;
}

// Where a segment's energy must next be taken: where its counting starts,
// where a step ends, where the segment ends.
std::size_t KWeighting::NextEvent(const Segment& segment, std::size_t position) const
{
    std::size_t next = std::min(segment.end, position + (stepFrames - (position + framesInStep) % stepFrames));
    if (position < segment.counted)
        next = std::min(next, segment.counted);
    return next;
}

// A segment's energy since it was last taken, weighted and summed over its
// channels, into the step of the frame before position; nothing of the
// warm-up counts.
void KWeighting::TakeEnergy(std::size_t segment, std::size_t position)
{
    double energy = 0;
    for (std::size_t c = 0; c < channels; ++c) {
        const std::size_t chain = segment * channels + c;
        double& lane = lanes[chain / kWeightingLanes].energy[chain % kWeightingLanes];
        energy += weights[c] * lane;
        lane = 0;
    }
    if (position > segments[segment].counted)
        stepEnergies[(position - 1 + framesInStep) / stepFrames] += energy;
}

// The run goes through the lanes a slice of steps at a time, as long as
// every segment not yet ended has frames for: prepare(steps) makes the
// slice's inputs, and filter(group, done, stretch) filters a group's lanes
// over a stretch of the slice that ends where some segment's energy must
// be taken. A segment that has ended gives its lanes silence.
template <typename Prepare, typename Filter>
void KWeighting::FilterRun(std::size_t slice, Prepare prepare, Filter filter)
{
    for (;;) {
        std::size_t steps = slice;
        for (const Segment& segment : segments) {
            if (segment.at < segment.end)
                steps = std::min(steps, segment.end - segment.at);
        }
        if (segments.back().at == segments.back().end)
            break;
        prepare(steps);
        for (std::size_t done = 0; done < steps;) {
            std::size_t stretch = steps - done;
            for (const Segment& segment : segments) {
                if (segment.at < segment.end)
                    stretch = std::min(stretch, NextEvent(segment, segment.at + done) - (segment.at + done));
            }
            for (std::size_t g = 0; g < lanes.size(); ++g)
                filter(g, done, stretch);
            const std::size_t before = done;
            done += stretch;
            for (std::size_t s = 0; s < segments.size(); ++s) {
                const Segment& segment = segments[s];
                if (segment.at >= segment.end || NextEvent(segment, segment.at + before) != segment.at + done)
                    continue;
                TakeEnergy(s, segment.at + done);
                if (s + 1 == segments.size() && segment.at + done == segment.end)
                    SaveStates(s);
            }
        }
        for (Segment& segment : segments) {
            if (segment.at < segment.end)
                segment.at += steps;
        }
    }
}

// The steps the run ended, and the one it leaves open.
void KWeighting::End(std::size_t frameCount, std::vector<double>& endedSteps)
{
    const std::size_t ended = (frameCount + framesInStep) / stepFrames;
    endedSteps.insert(endedSteps.end(), stepEnergies.begin(), stepEnergies.begin() + static_cast<std::ptrdiff_t>(ended));
    stepEnergy = stepEnergies[ended];
    framesInStep = static_cast<std::uint32_t>((frameCount + framesInStep) % stepFrames);
}

// Each segment's next frames are decoded. Where a segment's frames fill
// whole lanes (1, 2, 4 or 8 channels) the lanes read them where they were
// decoded; else they are laid side by side first, kWeightingLanes floats a
// step (lanes past the chains hold silence).
void KWeighting::Add(const FloatSource& source, std::size_t frameCount, std::vector<double>& endedSteps)
{
    if (frameCount == 0 || channels == 0)
        return;
    Begin(frameCount);
    const std::size_t groups = lanes.size();
    const bool direct = FillsLanes();
    const std::size_t runs = direct ? kWeightingLanes / channels : 1;
    const std::size_t slice = std::clamp<std::size_t>(kLaneFloats / (groups * kWeightingLanes), 1, kMostSteps);
    const std::size_t segmentFloats = slice * channels, groupFloats = slice * kWeightingLanes;
    decoded.resize(segments.size() * segmentFloats);
    silence.assign(segmentFloats, 0.0f);
    if (!direct)
        interleaved.assign(groups * groupFloats, 0.0f);
    const float* runStarts[kWeightingLanes];
    for (std::size_t r = 0; r < runs; ++r)
        runStarts[r] = silence.data();
    FilterRun(
        slice,
        [&](std::size_t steps) {
            for (std::size_t s = 0; s < segments.size(); ++s) {
                const bool going = segments[s].at < segments[s].end;
                float* into = decoded.data() + s * segmentFloats;
                if (going)
                    source(segments[s].at, static_cast<std::uint32_t>(steps), into);
                if (direct)
                    runStarts[s] = going ? into : silence.data();
                else if (groups == 1)
                    LayFrames(into, interleaved.data() + s * channels, channels, going ? steps : 0, steps);
                else {
                    for (std::size_t c = 0; c < channels; ++c) {
                        float* lane = interleaved.data() + c / kWeightingLanes * groupFloats + c % kWeightingLanes;
                        for (std::size_t i = 0; i < steps; ++i)
                            lane[i * kWeightingLanes] = into[i * channels + c];
                    }
                }
            }
        },
        [&](std::size_t g, std::size_t done, std::size_t stretch) {
            const float* starts[kWeightingLanes];
            for (std::size_t r = 0; r < runs; ++r)
                starts[r] = direct ? runStarts[r] + done * channels
                                   : interleaved.data() + g * groupFloats + done * kWeightingLanes;
            KWeightLanes(path, shelf, highPass, lanes[g], starts, direct ? channels : kWeightingLanes, stretch);
        });
    End(frameCount, endedSteps);
}

bool KWeighting::FillsLanes() const
{
    return channels == 1 || channels == 2 || channels == 4 || channels == 8;
}

void KWeighting::AddCodes(const std::uint8_t* codes, std::size_t frameCount, std::vector<double>& endedSteps)
{
    if (frameCount == 0 || !FillsLanes())
        return;
    Begin(frameCount);
    const std::size_t runs = kWeightingLanes / channels, frameBytes = channels * 2;
    silentCodes.assign(kMostSteps * frameBytes, 0);
    FilterRun(
        kMostSteps, [](std::size_t) {},
        [&](std::size_t g, std::size_t done, std::size_t stretch) {
            const std::uint8_t* starts[kWeightingLanes];
            for (std::size_t r = 0; r < runs; ++r) {
                const bool going = r < segments.size() && segments[r].at < segments[r].end;
                starts[r] = going ? codes + (segments[r].at + done) * frameBytes : silentCodes.data();
            }
            KWeightCodeLanes(path, shelf, highPass, lanes[g], starts, channels, stretch);
        });
    End(frameCount, endedSteps);
}

// The last segment's filter states, which the next run goes on from.
void KWeighting::SaveStates(std::size_t segment)
{
    for (std::size_t c = 0; c < channels; ++c) {
        const std::size_t chain = segment * channels + c;
        for (std::size_t k = 0; k < 4; ++k)
            states[c][k] = lanes[chain / kWeightingLanes].z[k][chain % kWeightingLanes];
    }
}
