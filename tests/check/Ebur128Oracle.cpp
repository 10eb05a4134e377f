// The reference meter beside sondara-check's own in the loudness test:
// reads raw 32-bit float frames from standard input and prints
// "integrated range truePeak1 truePeak2 ..." as libebur128 measures them.
//   ebur128-oracle RATE CHANNELS [POSITION...]
// Each channel's position is one of libebur128's own channel names (LEFT,
// RIGHT, CENTER, UNUSED, Mp110, Mm135, Up030 ...), so the weights are the
// library's, not the checker's. Any error of the library, an unknown name
// or an input that isn't whole frames ends it with status 1 and a message.
// A test tool only; no program of the product links libebur128.
#include <ebur128.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct Position {
    const char* name;
    int channel;
};

const Position kPositions[] = {
    {"UNUSED", EBUR128_UNUSED},         {"LEFT", EBUR128_LEFT},
    {"RIGHT", EBUR128_RIGHT},           {"CENTER", EBUR128_CENTER},
    {"LEFT_SURROUND", EBUR128_LEFT_SURROUND}, {"RIGHT_SURROUND", EBUR128_RIGHT_SURROUND},
    {"DUAL_MONO", EBUR128_DUAL_MONO},   {"Mp030", EBUR128_Mp030},
    {"Mm030", EBUR128_Mm030},           {"Mp000", EBUR128_Mp000},
    {"Mp110", EBUR128_Mp110},           {"Mm110", EBUR128_Mm110},
    {"MpSC", EBUR128_MpSC},             {"MmSC", EBUR128_MmSC},
    {"Mp060", EBUR128_Mp060},           {"Mm060", EBUR128_Mm060},
    {"Mp090", EBUR128_Mp090},           {"Mm090", EBUR128_Mm090},
    {"Mp135", EBUR128_Mp135},           {"Mm135", EBUR128_Mm135},
    {"Mp180", EBUR128_Mp180},           {"Up000", EBUR128_Up000},
    {"Up030", EBUR128_Up030},           {"Um030", EBUR128_Um030},
    {"Up045", EBUR128_Up045},           {"Um045", EBUR128_Um045},
    {"Up090", EBUR128_Up090},           {"Um090", EBUR128_Um090},
    {"Up110", EBUR128_Up110},           {"Um110", EBUR128_Um110},
    {"Up135", EBUR128_Up135},           {"Um135", EBUR128_Um135},
    {"Up180", EBUR128_Up180},           {"Tp000", EBUR128_Tp000},
    {"Bp000", EBUR128_Bp000},           {"Bp045", EBUR128_Bp045},
    {"Bm045", EBUR128_Bm045},
};

int Fail(const char* what, const char* detail = "")
{
    std::fprintf(stderr, "ebur128-oracle: %s%s\n", what, detail);
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return Fail("usage: ebur128-oracle RATE CHANNELS [POSITION...]");
    const unsigned long rate = std::strtoul(argv[1], nullptr, 10);
    const unsigned channels = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
    ebur128_state* state = ebur128_init(channels, rate, EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK);
    if (!state)
        return Fail("ebur128_init refused the rate or channels");
    if (static_cast<unsigned>(argc - 3) > channels)
        return Fail("more positions than channels");
    for (int i = 3; i < argc; ++i) {
        const Position* found = nullptr;
        for (const Position& position : kPositions)
            if (std::strcmp(position.name, argv[i]) == 0)
                found = &position;
        if (!found)
            return Fail("unknown channel position ", argv[i]);
        if (ebur128_set_channel(state, static_cast<unsigned>(i - 3), found->channel) != EBUR128_SUCCESS)
            return Fail("ebur128_set_channel failed for ", argv[i]);
    }
    std::vector<float> frames(4096 * channels);
    std::size_t got;
    while ((got = std::fread(frames.data(), sizeof(float) * channels, 4096, stdin)) > 0)
        if (ebur128_add_frames_float(state, frames.data(), got) != EBUR128_SUCCESS)
            return Fail("ebur128_add_frames_float failed");
    if (std::fgetc(stdin) != EOF)
        return Fail("the input is not whole frames");
    double integrated = 0, range = 0;
    if (ebur128_loudness_global(state, &integrated) != EBUR128_SUCCESS ||
        ebur128_loudness_range(state, &range) != EBUR128_SUCCESS)
        return Fail("no loudness");
    std::printf("%.4f %.4f", integrated, range);
    for (unsigned c = 0; c < channels; ++c) {
        double peak = 0;
        if (ebur128_true_peak(state, c, &peak) != EBUR128_SUCCESS)
            return Fail("no true peak");
        std::printf(" %.4f", peak > 0 ? 20 * std::log10(peak) : -1000.0);
    }
    std::printf("\n");
    ebur128_destroy(&state);
    return 0;
}
