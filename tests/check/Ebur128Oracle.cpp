// The reference meter beside sondara-check's own in the loudness test:
// reads raw 32-bit float frames from standard input and prints
// "integrated range truePeak1 truePeak2 ..." as libebur128 measures them.
//   ebur128-oracle RATE CHANNELS [MASK-WEIGHTS...]
// A test tool only; no program of the product links libebur128.
#include <ebur128.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    const unsigned long rate = std::strtoul(argv[1], nullptr, 10);
    const unsigned channels = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
    ebur128_state* state = ebur128_init(channels, rate, EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK);
    if (!state)
        return 1;
    // The weights the checker uses, given as channel kinds.
    for (int i = 3; i < argc && static_cast<unsigned>(i - 3) < channels; ++i) {
        const double weight = std::strtod(argv[i], nullptr);
        ebur128_set_channel(state, static_cast<unsigned>(i - 3),
                            weight == 0 ? EBUR128_UNUSED : weight > 1 ? EBUR128_LEFT_SURROUND : EBUR128_LEFT);
    }
    std::vector<float> frames(4096 * channels);
    std::size_t got;
    while ((got = std::fread(frames.data(), sizeof(float) * channels, 4096, stdin)) > 0)
        ebur128_add_frames_float(state, frames.data(), got);
    double integrated = 0, range = 0;
    ebur128_loudness_global(state, &integrated);
    ebur128_loudness_range(state, &range);
    std::printf("%.4f %.4f", integrated, range);
    for (unsigned c = 0; c < channels; ++c) {
        double peak = 0;
        ebur128_true_peak(state, c, &peak);
        std::printf(" %.4f", peak > 0 ? 20 * std::log10(peak) : -1000.0);
    }
    std::printf("\n");
    ebur128_destroy(&state);
    return 0;
}
