#pragma once

#include "measure/KWeighting.h"
#include "measure/VectorPath.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// Loudness of a programme as ITU-R BS.1770-4 and EBU Tech 3341/3342 measure
// it: integrated loudness with its two gates, loudness range, the highest
// momentary (400 ms) and short-term (3 s) loudness, and per channel the
// true peak, oversampled four times (twice at 96 kHz and above). Fed with
// frames of float samples at full scale ±1.0; memory does not grow with
// the length of the programme (the gated blocks go into histograms of
// 0.01 LU).
class LoudnessMeter {
public:
    // weights: one per channel, as ChannelWeights gives them; path: the
    // inner loops' (see VectorPath.h).
    LoudnessMeter(std::uint32_t sampleRate, std::vector<double> weights, VectorPath path = BestVectorPath());

    void Add(const float* frames, std::size_t frameCount)
    {
        AddLoudness(frames, frameCount);
        AddTruePeaks(frames, frameCount);
    }
    // The two halves of Add. They share nothing, so two threads may feed
    // them the same frames at once; Result wants both to have had them all.
    void AddLoudness(const float* frames, std::size_t frameCount);
    // The same from frames that source decodes: a long run is filtered
    // faster than short ones (see KWeighting).
    void AddLoudness(const FloatSource& source, std::size_t frameCount);
    // The same of packed little-endian 16-bit codes, where TakesCodes: the
    // figures of their floats to the last bit, with no floats made.
    void AddLoudnessCodes(const std::uint8_t* codes, std::size_t frameCount);
    bool TakesCodes() const { return kWeighting.FillsLanes(); }
    void AddTruePeaks(const float* frames, std::size_t frameCount);

    // The true peaks of a long programme may be found in parts, each part
    // by a meter of its own: a part that begins anywhere but at the start
    // is primed first with the frames before it (up to 11 count), which
    // are not measured. MergeTruePeaks takes another meter's true peaks in.
    void PrimeTruePeaks(const float* frames, std::size_t frameCount);
    void MergeTruePeaks(const LoudnessMeter& other);
    static constexpr std::size_t kTruePeakHistory = 11;

    struct Figures {
        double integrated;     // LUFS; -inf when every block is gated away
        double range;          // LU
        double momentaryMax;   // LUFS
        double shortTermMax;   // LUFS
        std::vector<double> truePeak; // per channel, as a fraction of full scale
    };
    Figures Result() const;

    // BS.1770's weights: 1.41 for the channels at the sides (the surround
    // pair of 5.1, the side pair of 7.1), 0 for LFE, 1.0 for the rest, the
    // back pair of 7.1 and a back centre among them. With a channel mask
    // (WAVE_FORMAT_EXTENSIBLE) each channel's speaker decides; without one,
    // the usual order of 5.1 (L R C LFE Ls Rs) for six channels, 1.0
    // otherwise.
    static std::vector<double> ChannelWeights(std::uint16_t channels, std::uint32_t channelMask);

private:
    struct PeakState {
        std::vector<float> line; // the last samples, then a run's, for the true-peak filter
        double truePeak = 0;
    };
    class Histogram {
    public:
        void Add(double energy);
        // The mean energy of the blocks above a loudness, and their count.
        double MeanAbove(double loudness, std::uint64_t& count) const;
        // The loudness below which this share of the blocks above a floor lie.
        double Percentile(double floor, double share) const;
    private:
        static int Bin(double loudness);
        std::vector<double> energies = std::vector<double>(kBins, 0.0);
        std::vector<std::uint64_t> counts = std::vector<std::uint64_t>(kBins, 0);
        static constexpr int kBins = 8000; // -70 to +10 LUFS in 0.01 LU
        int top = 0;                        // the bins above this one are empty
    };

    void EndOfStep(double energy);
    float TruePeakOf(PeakState& state, const float* samples, std::size_t count, std::size_t stride) const;

    std::vector<double> weights;
    VectorPath path;
    KWeighting kWeighting;
    std::vector<double> endedSteps; // of the run being added
    std::vector<PeakState> peaks;
    std::uint32_t stepFrames;       // 100 ms
    std::vector<double> steps;      // the last 30 steps' weighted energies
    std::size_t stepCount = 0;
    double momentaryMax = -1e300, shortTermMax = -1e300;
    Histogram blocks, shortTerms;
    int oversampling;
    TruePeakTaps interpolator = {}; // the true-peak filter, folded
};
