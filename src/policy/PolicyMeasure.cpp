#include "policy/PolicyMeasure.h"

#include "measure/Levels.h"
#include "wave/FourCc.h"

#include <cmath>

namespace {

using Figures = std::optional<std::vector<Figure>>;

Figures One(double number)
{
    return std::vector<Figure>{{number, {}}};
}

// The format tag the audio is in: an extensible format's sub-format.
std::uint16_t FormatTag(const AudioPlace& place)
{
    const std::uint16_t tag = ReadLittleEndian16(place.format);
    return tag == 0xFFFE && place.formatBytes >= 40 ? ReadLittleEndian16(place.format + 24) : tag;
}

Figures Header(const MeasureInput& input, int offset, int bytes)
{
    if (!input.facts.hasPlace)
        return std::nullopt;
    return One(bytes == 2 ? ReadLittleEndian16(input.facts.place.format + offset)
                          : ReadLittleEndian32(input.facts.place.format + offset));
}

Figures Container(const MeasureInput& input)
{
    if (!input.facts.hasPlace)
        return std::nullopt;
    return std::vector<Figure>{{0, input.facts.rf64 ? "rf64" : "riff"}};
}

Figures Format(const MeasureInput& input)
{
    if (!input.facts.hasPlace)
        return std::nullopt;
    const std::uint16_t tag = FormatTag(input.facts.place);
    return std::vector<Figure>{{static_cast<double>(tag), tag == 1 ? "pcm" : tag == 3 ? "float" : std::to_string(tag)}};
}

Figures Duration(const MeasureInput& input)
{
    const std::uint32_t rate = input.facts.hasPlace ? ReadLittleEndian32(input.facts.place.format + 4) : 0;
    if (rate == 0 || input.facts.place.dataPosition < 0)
        return std::nullopt;
    return One(static_cast<double>(input.facts.place.frameCount) / rate);
}

Figures CountFindings(const MeasureInput& input, std::optional<Severity> severity)
{
    std::size_t count = 0;
    for (const Finding& finding : input.check.findings) {
        if (severity ? finding.kind->severity == *severity : input.code == finding.kind->code)
            ++count;
    }
    return One(static_cast<double>(count));
}

// Each channel's levels in decibels; none when the audio wasn't measured.
template <typename Pick>
Figures EachChannel(const MeasureInput& input, Pick pick)
{
    if (!input.facts.measured)
        return std::nullopt;
    std::vector<Figure> figures;
    for (const ChannelLevels& channel : input.facts.levels.channels)
        figures.push_back({ToDecibels(pick(channel)), {}});
    return figures;
}

Figures Loudness(const MeasureInput& input, double LoudnessMeter::Figures::*member)
{
    if (!input.facts.measured || !input.facts.levels.hasLoudness)
        return std::nullopt;
    return One(input.facts.levels.loudness.*member);
}

Figures TruePeak(const MeasureInput& input)
{
    if (!input.facts.measured || !input.facts.levels.hasLoudness)
        return std::nullopt;
    std::vector<Figure> figures;
    for (double peak : input.facts.levels.loudness.truePeak)
        figures.push_back({ToDecibels(peak), {}});
    return figures;
}

// A figure of each channel's record of one meter; none when the audio
// wasn't measured or a channel has no figure.
template <typename Record, typename Pick>
Figures EachRecord(const MeasureInput& input, const std::vector<Record> LevelReport::*records, Pick pick)
{
    if (!input.facts.measured || (input.facts.levels.*records).empty())
        return std::nullopt;
    std::vector<Figure> figures;
    for (const Record& record : input.facts.levels.*records) {
        const std::optional<double> number = pick(record);
        if (!number)
            return std::nullopt;
        figures.push_back({*number, {}});
    }
    return figures;
}

// Frames of one channel's silence in seconds.
template <typename Pick>
Figures SilenceSeconds(const MeasureInput& input, Pick pick)
{
    const double rate = input.facts.levels.sampleRate;
    return EachRecord(input, &LevelReport::silence, [&](const ChannelSilence& silence) -> std::optional<double> {
        return rate > 0 ? std::optional<double>(static_cast<double>(pick(silence)) / rate) : std::nullopt;
    });
}

Figures NoiseFloor(const MeasureInput& input)
{
    return EachRecord(input, &LevelReport::noiseFloor, [](const std::optional<double>& rms) {
        return rms ? std::optional<double>(ToDecibels(*rms)) : std::nullopt;
    });
}

constexpr PolicyMeasure kMeasures[] = {
    {"container", "", FactDepth::Header, 0, false, Container},
    {"format", "", FactDepth::Header, 0, false, Format},
    {"sample-rate", "Hz", FactDepth::Header, 0, false, [](const MeasureInput& in) { return Header(in, 4, 4); }},
    {"bits", "", FactDepth::Header, 0, false, [](const MeasureInput& in) { return Header(in, 14, 2); }},
    {"channels", "", FactDepth::Header, 0, false, [](const MeasureInput& in) { return Header(in, 2, 2); }},
    {"duration", "s", FactDepth::Header, 3, false, Duration},
    {"errors", "", FactDepth::Header, 0, false, [](const MeasureInput& in) { return CountFindings(in, Severity::Error); }},
    {"warnings", "", FactDepth::Header, 0, false,
     [](const MeasureInput& in) { return CountFindings(in, Severity::Warning); }},
    {"finding", "", FactDepth::Header, 0, false, [](const MeasureInput& in) { return CountFindings(in, std::nullopt); }},
    {"peak", "dBFS", FactDepth::Levels, 1, true,
     [](const MeasureInput& in) { return EachChannel(in, [](const ChannelLevels& c) { return c.peak; }); }},
    {"rms", "dBFS", FactDepth::Levels, 1, true,
     [](const MeasureInput& in) { return EachChannel(in, [](const ChannelLevels& c) { return c.rms; }); }},
    {"dc-offset", "dBFS", FactDepth::Levels, 1, true,
     [](const MeasureInput& in) { return EachChannel(in, [](const ChannelLevels& c) { return std::fabs(c.dcOffset); }); }},
    {"integrated", "LUFS", FactDepth::Loudness, 1, false,
     [](const MeasureInput& in) { return Loudness(in, &LoudnessMeter::Figures::integrated); }},
    {"loudness-range", "LU", FactDepth::Loudness, 1, false,
     [](const MeasureInput& in) { return Loudness(in, &LoudnessMeter::Figures::range); }},
    {"true-peak", "dBTP", FactDepth::Loudness, 1, true, TruePeak},
    {"noise-floor", "dBFS", FactDepth::Levels, 1, true, NoiseFloor},
    {"silence-lead", "s", FactDepth::Levels, 2, true,
     [](const MeasureInput& in) { return SilenceSeconds(in, [](const ChannelSilence& s) { return s.lead; }); }},
    {"silence-tail", "s", FactDepth::Levels, 2, true,
     [](const MeasureInput& in) { return SilenceSeconds(in, [](const ChannelSilence& s) { return s.tail; }); }},
    {"longest-silence", "s", FactDepth::Levels, 2, true,
     [](const MeasureInput& in) { return SilenceSeconds(in, [](const ChannelSilence& s) { return s.longestInside; }); }},
    {"silent-runs", "", FactDepth::Levels, 0, true,
     [](const MeasureInput& in) {
         return EachRecord(in, &LevelReport::silence,
                           [](const ChannelSilence& s) { return std::optional<double>(static_cast<double>(s.runs)); });
     }},
    {"digital-zero", "", FactDepth::Levels, 0, true,
     [](const MeasureInput& in) {
         return EachRecord(in, &LevelReport::silence,
                           [](const ChannelSilence& s) { return std::optional<double>(s.digitalZero ? 1 : 0); });
     }},
    {"clipping-runs", "", FactDepth::Levels, 0, true,
     [](const MeasureInput& in) {
         return EachRecord(in, &LevelReport::clippingRuns,
                           [](const ClippingRuns& c) { return std::optional<double>(static_cast<double>(c.runs)); });
     }},
    {"correlation", "", FactDepth::Levels, 2, true,
     [](const MeasureInput& in) { return EachRecord(in, &LevelReport::pairs, [](const PairFigures& p) { return p.correlation; }); }},
    {"lowest-correlation", "", FactDepth::Levels, 2, true,
     [](const MeasureInput& in) { return EachRecord(in, &LevelReport::pairs, [](const PairFigures& p) { return p.lowestBlock; }); }},
};

} // namespace

const PolicyMeasure* FindPolicyMeasure(std::string_view name)
{
    for (const PolicyMeasure& measure : kMeasures) {
        if (name == measure.name)
            return &measure;
    }
    return nullptr;
}

std::string PolicyMeasureNames()
{
    std::string names;
    for (const PolicyMeasure& measure : kMeasures)
        names += (names.empty() ? "" : ", ") + std::string(measure.name);
    return names;
}
