#include "support/CheckerProcess.h"
#include "support/RiffBytes.h"

#include <gtest/gtest.h>

// The checker as a process: the native build only.
#ifdef SONDARA_CHECK_PROGRAM
#include <filesystem>

namespace {

// 16-bit PCM of a square wave between +level and -level, frames long.
std::string SquareWave(std::uint16_t channels, std::uint32_t rate, std::int16_t level, std::uint32_t frames)
{
    RiffBytes audio;
    for (std::uint32_t f = 0; f < frames; ++f) {
        for (std::uint16_t c = 0; c < channels; ++c)
            audio.U16(static_cast<std::uint16_t>(f % 2 ? -level : level));
    }
    return Wave(FormatBody(1, channels, rate, 16), audio.Bytes());
}

const std::string kAllClearLine = "チェック完了しました。\n";

} // namespace

// A policy file that doesn't read is bad usage that names the line, so that
// a misspelt key can never make every file pass.
TEST(PolicyFile, ErrorsNameTheLine)
{
    TempDir dir;
    dir.Write("sound.wav", SoundWave());
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"name = \"p\"\n[[rule]]\nmeasure = \"peak\"\nat-mots = -1\n", "p.toml:4: unknown key \"at-mots\""},
        {"name = \"p\"\n[[rule]]\nmeasure = \"rms\"\nrange = [-18, -23]\n",
         "p.toml:4: the range's low end is above its high end"},
        {"name = \"p\"\n[[rule]]\nmeasure = \"loudnes\"\nat-most = 1\n", "p.toml:3: unknown measure \"loudnes\""},
        {"name = \"p\"\ncolour = 1\n[[rule]]\nmeasure = \"bits\"\nallowed = [16]\n", "p.toml:2: unknown key \"colour\""},
        {"name = \"p\"\n[[rule]]\nmeasure = \"bits\"\n", "p.toml:2: a rule needs a limit"},
        {"name = \"p\"\n[[rule]\n", "p.toml:2: "},
        {"name = \"p\"\n# \U000F00E9\n", "p.toml:2: a private-use character"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        dir.Write("p.toml", c.text);
        const CheckerOutcome outcome = RunChecker(dir, {"--policy", "p.toml", "sound.wav"});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.err.rfind(std::string("sondara-check: ") + c.message, 0), 0u) << outcome.err;
    }
}

// Each outcome of a rule, and what it does to the exit status: a warn only
// with --strict, a measure not measured unless the rule allows it missing,
// and a batch held to its first file's channels.
TEST(PolicyRun, OutcomesAndExitStatus)
{
    TempDir dir;
    dir.Write("loud.wav", SquareWave(2, 44100, 29205, 4410));  // peak -1.0 dBFS
    dir.Write("mono.wav", SquareWave(1, 44100, 16384, 4410));  // peak -6.0 dBFS
    dir.Write("slow.wav", SquareWave(1, 4000, 16384, 400));    // too slow for a loudness
    dir.Write("rate.toml", "name = \"rate\"\n[[rule]]\nmeasure = \"sample-rate\"\nallowed = [44100, 48000]\n");
    dir.Write("peak.toml", "name = \"peak\"\n[[rule]]\nmeasure = \"peak\"\nat-most = -3\nseverity = \"warn\"\n");
    dir.Write("same.toml", "name = \"same\"\n[[rule]]\nmeasure = \"channels\"\nsame-in-batch = true\n");
    const char loudness[] = "name = \"lu\"\n[[rule]]\nmeasure = \"integrated\"\nat-most = 0\n";
    dir.Write("lu.toml", loudness);
    dir.Write("lu-missing.toml", std::string(loudness) + "may-be-missing = true\n");
    // Characters the TOML reader can't be shown, in strings and comments.
    dir.Write("text.toml", "name = \"prüfung 〆 ﻼ\" # ± ¡\n[[rule]]\nname = \"größe\"\nmeasure = \"container\"\n"
                           "allowed = [\"rf64\", \"ɐ〇\"]\n");
    const std::string peakWarn = "policy peak: peak: -1.0 dBFS, at most -3.0 (warn)\n";
    ExpectRuns(dir, {
        {{"--policy", "rate.toml", "loud.wav"}, 0, kAllClearLine + "policy rate: pass\n"},
        {{"--policy", "rate.toml", "slow.wav"}, 1, kAllClearLine + "policy rate: sample-rate: 4000 Hz, one of 44100, 48000 (fail)\n"},
        {{"--policy", "peak.toml", "mono.wav"}, 0, kAllClearLine + "policy peak: pass\n"},
        {{"--policy", "text.toml", "mono.wav"}, 1, kAllClearLine + "policy prüfung 〆 ﻼ: größe: riff, one of rf64, ɐ〇 (fail)\n"},
        {{"--policy", "peak.toml", "loud.wav"}, 0, kAllClearLine + peakWarn},
        {{"--strict", "--policy", "peak.toml", "loud.wav"}, 1, kAllClearLine + peakWarn},
        {{"--policy", "lu.toml", "slow.wav"}, 1, kAllClearLine + "policy lu: integrated: not measured, at most 0.0 (not-measured)\n"},
        {{"--policy", "lu-missing.toml", "slow.wav"}, 0, kAllClearLine + "policy lu: pass\n"},
        {{"--policy", "same.toml", "-j", "2", "mono.wav", "slow.wav", "loud.wav"}, 1,
         "== mono.wav\n" + kAllClearLine + "policy same: pass\n== slow.wav\n" + kAllClearLine + "policy same: pass\n== loud.wav\n" +
             kAllClearLine + "policy same: channels: 2, the same in every file (1) (fail)\n" +
             "3 files: 3 sound, 0 with findings, 0 with warnings, 0 unreadable\n"},
        {{"--jsonl", "--policy", "peak.toml", "loud.wav"}, 0,
         "{\"type\": \"file\", \"path\": \"loud.wav\", \"report\": "
             "\"\\u30c1\\u30a7\\u30c3\\u30af\\u5b8c\\u4e86\\u3057\\u307e\\u3057\\u305f\\u3002\\r\\n\", \"hasError\": false, \"findings\": [], \"policy\": {\"name\": \"peak\", \"outcome\": \"warn\", "
             "\"rules\": [{\"rule\": \"peak\", \"measure\": \"peak\", \"value\": -1.0, \"unit\": \"dBFS\", \"limit\": "
             "\"at most -3.0\", \"outcome\": \"warn\"}]}}\n"
             "{\"type\": \"summary\", \"files\": 1, \"sound\": 1, \"withFindings\": 0, \"withWarnings\": 0, "
             "\"unreadable\": 0}\n"},
    });
}

// The shipped policies of the delivery targets give the verdicts of
// --target on every sample.
TEST(PolicyRun, ShippedTargetsAgreeWithTarget)
{
    TempDir dir;
    for (const auto& sample : std::filesystem::directory_iterator(std::filesystem::path(SONDARA_TESTS_DIR) / "../samples")) {
        for (const char* name : {"ebu-r128", "atsc-a85", "streaming"}) {
            SCOPED_TRACE(sample.path().string() + " " + name);
            const CheckerOutcome target = RunChecker(dir, {"--json", "--target", name, sample.path().string()});
            const CheckerOutcome policy = RunChecker(dir, {"--json", "--policy", name, sample.path().string()});
            ASSERT_EQ(policy.err, "");
            EXPECT_EQ(target.out.find("\"pass\": true") != std::string::npos,
                      policy.out.find("\"outcome\": \"pass\", \"rules\"") != std::string::npos);
            EXPECT_EQ(policy.out.find("\"outcome\": \"fail\", \"rules\"") != std::string::npos, target.status == 1);
        }
    }
}
#endif
