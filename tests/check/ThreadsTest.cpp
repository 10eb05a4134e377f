// The checker's threads, run where ThreadSanitizer watches them: the checks
// of a folder several at a time, and the levels' read, sum and loudness
// threads over a file longer than three of their reads.
#include "cli/CheckRun.h"
#ifdef SONDARA_PACKAGE_QUEUE
#include "CheckQueue.h"
#endif
#include "cli/ConsoleSink.h"
#include "measure/Levels.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <vector>

// The threads take the paths from the folder walk themselves, as they go.
TEST(CheckerThreads, ManyChecksAtOncePrintWhatOneAtATimePrints)
{
    TempDir dir;
    dir.MakeDir("takes");
    int links = 0;
    for (int i = 0; i < 60; ++i) {
        const std::string folder = "takes/" + std::to_string(i / 20);
        if (i % 20 == 0)
            dir.MakeDir(folder);
        const std::string bytes = i % 5 == 1 ? "not riff" : i % 5 == 2 ? SoundWave() + "ab" : SoundWave(64 + i);
        dir.Write(folder + "/" + std::to_string(100 + i) + ".wav", bytes);
        // A link to nothing, where the system lets a test make links.
        std::error_code refused;
        if (i % 17 == 4) {
            std::filesystem::create_symlink("gone.wav", dir.Native() + "/" + folder + "/" + std::to_string(i) + ".wav",
                                            refused);
            links += refused ? 0 : 1;
        }
    }
    std::string outputs[2];
    int statuses[2] = {};
    const unsigned jobs[2] = {1, 7};
    for (int run = 0; run < 2; ++run) {
        FileSources sources({dir.PathOf("takes")}, SourceOptions{});
        StringSink sink;
        CheckRunOptions options;
        options.format = OutputFormat::JsonLines;
        options.jobs = jobs[run];
        statuses[run] = RunChecks(sources, options, sink);
        outputs[run] = sink.bytes;
    }
    EXPECT_EQ(statuses[0], 1);
    EXPECT_EQ(statuses[1], statuses[0]);
    EXPECT_EQ(outputs[1], outputs[0]);
    EXPECT_NE(outputs[0].find("\"files\": " + std::to_string(60 + links) + ", "), std::string::npos);
}

TEST(CheckerThreads, LevelsOfAFileLongerThanThreeReads)
{
    // Stereo 64-bit floats: 16 bytes a frame, so 17 MiB is more than four
    // reads of 4 MiB, with frames cut by the reads' ends.
    constexpr std::uint32_t kFrames = 17 * 1024 * 1024 / 16 + 3;
    std::vector<double> samples;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        samples.push_back(0.5 * std::sin(i * 0.01));
        samples.push_back(-0.25 * std::sin(i * 0.003));
    }
    TempDir dir;
    const WideString path = dir.Write("long.wav", FloatWave(samples, 2, 48000));
    for (const bool loudness : {false, true}) {
        SCOPED_TRACE(loudness ? "with loudness" : "levels alone");
        LevelReport report;
        std::string problem;
        FileLayout layout(path, kLevelsReading);
        ASSERT_TRUE(MeasureLevels(layout, report, problem, loudness)) << problem;
        EXPECT_EQ(report.frames, kFrames);
        ASSERT_EQ(report.channels.size(), 2u);
        EXPECT_NEAR(report.channels[0].peak, 0.5, 1e-6);
        EXPECT_NEAR(report.channels[1].peak, 0.25, 1e-6);
        EXPECT_EQ(report.hasLoudness, loudness);
    }
}

#ifdef SONDARA_PACKAGE_QUEUE
// The Python package's queue: sources checked on threads of its own come
// out in the order they went in, each as one check alone gives it, bytes
// in memory and paths alike; a queue that goes with sources still waiting
// drops them.
TEST(CheckerThreads, PackageQueueGivesOutcomesInTheOrderOfItsSources)
{
    TempDir dir;
    std::vector<std::string> held(90);
    std::vector<CheckSource> sources(held.size());
    for (std::size_t i = 0; i < held.size(); ++i) {
        held[i] = i % 4 == 1 ? "not riff" : SoundWave(static_cast<std::uint32_t>(8 + i));
        const std::string name = std::to_string(i) + ".wav";
        if (i % 3 == 0) {
            sources[i].inMemory = true;
            sources[i].bytes = {reinterpret_cast<const std::uint8_t*>(held[i].data()), held[i].size()};
            sources[i].path = WideString::FromAscii(name);
        } else {
            if (i % 3 == 1)
                dir.Write(name, held[i]); // else a path with no file
            sources[i].path = dir.PathOf(name);
        }
    }
    {
        CheckQueue queue(3);
        std::size_t taken = 0;
        for (std::size_t put = 0; put < sources.size() || taken < put;) {
            if (put < sources.size() && queue.Pending() < 8) {
                queue.Put(sources[put++]);
                continue;
            }
            SourceOutcome outcome;
            ASSERT_TRUE(queue.Take(outcome));
            const SourceOutcome alone = CheckSourceAsJson(sources[taken]);
            EXPECT_EQ(outcome.state, alone.state) << taken;
            EXPECT_EQ(outcome.text, alone.text) << taken;
            EXPECT_EQ(outcome.state, taken % 3 == 2 ? SourceState::Missing : SourceState::Done) << taken;
            ++taken;
        }
        SourceOutcome none;
        EXPECT_FALSE(queue.Take(none));
    }
    CheckQueue leaving(2);
    for (const CheckSource& source : sources)
        leaving.Put(source);
}
#endif
