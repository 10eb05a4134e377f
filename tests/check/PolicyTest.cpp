#include "support/CheckerProcess.h"
#include "support/RiffBytes.h"

#include <gtest/gtest.h>

// The checker as a process: the native build only.
#ifdef SONDARA_CHECK_PROGRAM
#include <cmath>
#include <filesystem>
#include <numbers>

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

// 16-bit PCM of these interleaved samples, fractions of full scale.
std::string Pcm16Wave(const std::vector<float>& samples, std::uint16_t channels, std::uint32_t rate)
{
    RiffBytes audio;
    for (float sample : samples)
        audio.U16(static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(sample * 32767))));
    return Wave(FormatBody(1, channels, rate, 16), audio.Bytes());
}

// A 1 kHz sine of this peak in both channels of a 48 kHz stereo file, 3 s.
std::string StereoSine(float peak)
{
    std::vector<float> samples;
    for (int i = 0; i < 3 * 48000; ++i)
        samples.insert(samples.end(), 2, peak * static_cast<float>(std::sin(2 * std::numbers::pi * 1000 * i / 48000)));
    return Pcm16Wave(samples, 2, 48000);
}

// A mono take of an audiobook as acx wants it: room tone of low noise at
// the head, 3 s of a 440 Hz tone, 2 s of room tone. Each field can miss.
struct Take {
    double head = 0.7;    // seconds of room tone
    double tone = 0.195;  // the tone's peak, -14.2 dBFS; the take's RMS is then -20.0 dB
    float spike = 0;      // a sample at this level each second of the tone
    float room = 0.0003f; // the room tone's noise, -70 dBFS at most; 0 for digital zero
    std::uint32_t rate = 44100;
};

std::string TakeWave(const Take& take)
{
    std::vector<float> samples;
    std::uint32_t noise = 1;
    auto roomTone = [&](double seconds) {
        for (int i = 0; i < seconds * take.rate; ++i) {
            noise = noise * 1664525u + 1013904223u;
            samples.push_back(take.room * (static_cast<float>(noise >> 8) / 8388608.0f - 1.0f));
        }
    };
    roomTone(take.head);
    for (std::uint32_t i = 0; i < 3 * take.rate; ++i) {
        const double tone = take.tone * std::sin(2 * std::numbers::pi * 440 * i / take.rate);
        samples.push_back(take.spike != 0 && i % take.rate == take.rate / 2 ? take.spike : static_cast<float>(tone));
    }
    roomTone(2.0);
    return Pcm16Wave(samples, 1, take.rate);
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
             "\"\\u30c1\\u30a7\\u30c3\\u30af\\u5b8c\\u4e86\\u3057\\u307e\\u3057\\u305f\\u3002\\r\\n\", \"hasError\": false, \"findings\": [], \"format\": {\"container\": \"riff\", \"formatTag\": 1, "
             "\"subFormat\": null, \"sampleRate\": 44100, \"channels\": 2, \"bits\": 16, \"blockAlign\": 4, "
             "\"frames\": 4410, \"seconds\": 0.100000}, \"policy\": {\"name\": \"peak\", \"outcome\": \"warn\", "
             "\"rules\": [{\"rule\": \"peak\", \"measure\": \"peak\", \"value\": -1.0, \"unit\": \"dBFS\", \"limit\": "
             "\"at most -3.0\", \"outcome\": \"warn\"}]}}\n"
             "{\"type\": \"summary\", \"files\": 1, \"sound\": 1, \"withFindings\": 0, \"withWarnings\": 0, "
             "\"unreadable\": 0}\n"},
    });
}

// The shipped acx policy passes a take made to meet it, and fails each take
// made to miss one rule on that rule alone. A room tone of digital zero is
// the one way to miss the noise floor alone: room tone that is silence
// below -60 dBFS holds a quiet half second, unless it is no sound at all.
TEST(PolicyRun, AcxFailsATakeOnTheRuleItMisses)
{
    TempDir dir;
    const struct {
        const char* file;
        Take take;
        const char* missed; // the rule that fails; none for a pass
    } cases[] = {
        {"meets.wav", {}, nullptr},
        {"quiet.wav", {.tone = 0.08}, "rms"},
        {"spiky.wav", {.spike = 0.9f}, "peak"},
        {"48k.wav", {.rate = 48000}, "sample-rate"},
        {"no-room.wav", {.room = 0}, "noise-floor"},
        {"short-head.wav", {.head = 0.3}, "room-tone-head"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        dir.Write(c.file, TakeWave(c.take));
        const CheckerOutcome outcome = RunChecker(dir, {"--policy", "acx", c.file});
        if (!c.missed) {
            EXPECT_EQ(outcome.status, 0);
            EXPECT_EQ(outcome.out, kAllClearLine + "policy acx: pass\n");
            continue;
        }
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out.rfind(kAllClearLine + "policy acx: " + c.missed + ": ", 0), 0u) << outcome.out;
        EXPECT_TRUE(outcome.out.ends_with(" (fail)\n") && std::count(outcome.out.begin(), outcome.out.end(), '\n') == 2)
            << outcome.out;
    }
}

// The shipped policies of the delivery targets give the verdicts of
// --target on every sample, and on a file made to pass ebu-r128 and one
// made to pass streaming.
TEST(PolicyRun, ShippedTargetsAgreeWithTarget)
{
    TempDir dir;
    dir.Write("ebu.wav", StereoSine(0.0708f));       // -23 LUFS
    dir.Write("streaming.wav", StereoSine(0.1995f)); // -14 LUFS
    std::vector<std::string> files = {"ebu.wav", "streaming.wav"};
    for (const auto& sample : std::filesystem::directory_iterator(std::filesystem::path(SONDARA_TESTS_DIR) / "../samples"))
        files.push_back(sample.path().string());
    int passes = 0;
    for (const std::string& file : files) {
        for (const char* name : {"ebu-r128", "atsc-a85", "streaming"}) {
            SCOPED_TRACE(file + " " + name);
            const CheckerOutcome target = RunChecker(dir, {"--json", "--target", name, file});
            const CheckerOutcome policy = RunChecker(dir, {"--json", "--policy", name, file});
            ASSERT_EQ(policy.err, "");
            const bool passed = policy.out.find("\"outcome\": \"pass\", \"rules\"") != std::string::npos;
            EXPECT_EQ(target.out.find("\"pass\": true") != std::string::npos, passed);
            EXPECT_EQ(policy.out.find("\"outcome\": \"fail\", \"rules\"") != std::string::npos, target.status == 1);
            passes += passed;
        }
    }
    EXPECT_EQ(passes, 3); // ebu.wav to ebu-r128 and atsc-a85 (-24 ±2), streaming.wav to streaming
}
#endif
