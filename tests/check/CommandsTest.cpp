// The chunk list, the levels and the tidy copy of sondara-check, on files
// made here and on the samples of the repository.
#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "check/WaveCheck.h"
#include "cli/ChunkList.h"
#include "cli/ConsoleSink.h"
#include "cli/LevelsPrinter.h"
#include "measure/Levels.h"
#include "mend/TidyCopy.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cstring>

#ifdef SONDARA_CHECK_PROGRAM
#include "support/CheckerProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::string Check(const WideString& path)
{
    CheckReport report;
    bool hasError = false;
    RunWaveCheck(path, report, hasError);
    return WideToUtf8(report.View());
}

std::string Levels(const WideString& path)
{
    FileLayout layout(path, kLevelsReading);
    LevelReport report;
    std::string problem;
    if (!MeasureLevels(layout, report, problem))
        return problem;
    // The levels alone: the meters beyond them are tried on their own.
    report.silence.clear();
    report.clippingRuns.clear();
    report.noiseFloor.clear();
    report.pairs.clear();
    return FormatLevelsText(report);
}

bool Tidy(const WideString& input, const WideString& output, std::vector<std::string>& changes, std::string& problem)
{
    FileLayout layout(input, kTidyReading);
    return MakeTidyCopy(layout, output, changes, problem);
}

// Frames of 16-bit stereo whose samples run through many values.
std::string Tone(std::uint32_t frames)
{
    RiffBytes samples;
    for (std::uint32_t i = 0; i < frames; ++i)
        samples.U16(static_cast<std::uint16_t>(i * 977)).U16(static_cast<std::uint16_t>(30000 - i * 13));
    return samples.Bytes();
}

const std::string kFormat = FmtBytes(FormatBody(1, 2, 44100, 16));

} // namespace

// Each chunk on a line by depth, a list with its type and INFO entries, and
// a mark where a size runs past the end of the file or of the chunk around
// it (the RIFF size here is too small for the data chunk), in text or JSON.
TEST(ChunkList, ShowsWhatTheWalkKeepsAndMarksSizesPastAnEnd)
{
    TempDir dir;
    const std::string info = RiffBytes().Head("LIST", 26, "INFO").Chunk("INAM", "take\0").Chunk("IART", "me").Bytes();
    const std::string bytes = RiffBytes().Head("RIFF", 4 + 24 + 34 + 8).Raw(kFormat).Raw(info)
                                  .Id("data").U32(100).Raw(std::string(60, 'd')).Bytes();
    StringSink sink;
    EXPECT_FALSE(ListChunks(dir.Write("a.wav", bytes), false, sink));
    EXPECT_EQ(sink.bytes, "RIFF at 0, 70 bytes, form WAVE\n"
                         "  fmt  at 12, 16 bytes\n"
                         "  LIST at 36, 26 bytes, list INFO: INAM \"take\", IART \"me\"\n"
                         "  data at 70, 100 bytes; runs past the end of the file by 40 bytes; runs past the end of "
                         "its parent by 100 bytes\n");
    StringSink json;
    ListChunks(dir.Write("b.wav", SoundWave()), true, json);
    EXPECT_NE(json.bytes.find(", \"chunks\": [\n    {\"depth\": 0, \"offset\": 0, \"id\": \"RIFF\", \"size\": 52, \"form\": "
                             "\"WAVE\", \"pastFileEnd\": false, \"pastParentEnd\": false},\n    {\"depth\": 1, \"offset\": 12, "
                             "\"id\": \"fmt \", \"size\": 16, \"pastFileEnd\": false, \"pastParentEnd\": false},\n    "
                             "{\"depth\": 1, \"offset\": 36, \"id\": \"data\", \"size\": 16, \"pastFileEnd\": false, "
                             "\"pastParentEnd\": false}\n  ]}"),
              std::string::npos)
        << json.bytes;

    // The list is the tree the document keeps, though it is written as the
    // walk goes: before the RIFF id, only a chunk that holds a registry slot
    // (the INFO list here); and nothing of a RIFF chunk that a walk nested
    // too deep gives up, though its header and its first child were read
    // before the walk went too deep.
    const std::string slotted = ListBytes("INFO", RiffBytes().Chunk("INAM", std::string("take\0", 5)).Bytes());
    std::string chain;
    for (int level = 0; level < 300; ++level)
        chain = Riff(chain);
    const std::string nested =
        Riff(kFormat + slotted + Riff(RiffBytes().Chunk("abcd", "xy").Raw(chain).Bytes()) + DataBytes("abcd"));
    StringSink kept;
    EXPECT_TRUE(ListChunks(dir.Write("c.wav", "xxxx" + slotted + nested + RiffBytes().Chunk("tail", "").Bytes()), false, kept));
    EXPECT_EQ(kept.bytes, "LIST at 4, 18 bytes, list INFO: INAM \"take\"\n"
                         "RIFF at 30, 3,688 bytes, form WAVE\n"
                         "  fmt  at 42, 16 bytes\n"
                         "  LIST at 66, 18 bytes, list INFO: INAM \"take\"\n");
}

// Full scale is the highest and the lowest code; 8-bit samples are
// unsigned around 128, 24 and 32-bit ones signed; floats are at full scale
// from 1.0 on. What is not PCM or float of those widths is refused with a
// word on why.
TEST(LevelsOf, EachSampleWidth)
{
    TempDir dir;
    auto wave = [](std::uint16_t tag, std::uint16_t channels, std::uint16_t bits, const std::string& samples) {
        return Wave(FormatBody(tag, channels, 8000, bits), samples);
    };
    std::string nineSilent;
    for (int channel = 1; channel <= 9; ++channel)
        nineSilent += "channel " + std::to_string(channel) + ": peak -inf dBFS, RMS -inf dBFS, DC offset 0.000000, 0 samples at full scale\n";
    const struct {
        std::string bytes, levels;
    } cases[] = {
        {wave(1, 1, 8, std::string("\x80\xFF\x00\xC0", 4)),
         "duration 0:00.001 (4 frames at 8,000 Hz, 8-bit)\n"
         "channel 1: peak 0.00 dBFS, RMS -2.53 dBFS, DC offset 0.123047, 2 samples at full scale\n"},
        {wave(1, 2, 24, std::string("\xFF\xFF\x7F\x00\x00\x80\x00\x00\x40\x00\x00\x00", 12)),
         "duration 0:00.000 (2 frames at 8,000 Hz, 24-bit)\n"
         "channel 1: peak 0.00 dBFS, RMS -2.04 dBFS, DC offset 0.750000, 1 samples at full scale\n"
         "channel 2: peak 0.00 dBFS, RMS -3.01 dBFS, DC offset -0.500000, 1 samples at full scale\n"},
        {wave(1, 1, 32, std::string("\xFF\xFF\xFF\x7F\x00\x00\x00\x80\x00\x00\x00\x40\x00\x00\x00\x00", 16)),
         "duration 0:00.001 (4 frames at 8,000 Hz, 32-bit)\n"
         "channel 1: peak 0.00 dBFS, RMS -2.50 dBFS, DC offset 0.125000, 2 samples at full scale\n"},
        {wave(3, 1, 32, std::string("\x00\x00\xC0\x3F\x00\x00\x80\xBF\x00\x00\x00\x3F\x00\x00\x00\x00", 16)),
         "duration 0:00.001 (4 frames at 8,000 Hz, 32-bit float)\n"
         "channel 1: peak 3.52 dBFS, RMS -0.58 dBFS, DC offset 0.250000, 2 samples at full scale, 1 over it\n"},
        {wave(3, 2, 16, std::string(8, '\0')),
         "16-bit float samples: levels are measured for PCM (8, 16, 24 and 32-bit) and float (32 and 64-bit) only"},
        {wave(6, 2, 8, std::string(8, '\0')),
         "format tag 0x0006 is not PCM: levels are measured for PCM (8, 16, 24 and 32-bit) and float (32 and 64-bit) only"},
        {wave(1, 2, 12, std::string(8, '\0')),
         "12-bit PCM samples: levels are measured for PCM (8, 16, 24 and 32-bit) and float (32 and 64-bit) only"},
        {wave(1, 9, 16, std::string(18, '\0')), "duration 0:00.000 (1 frames at 8,000 Hz, 16-bit)\n" + nineSilent},
        {Riff(kFormat), "no data chunk"},
        {Riff(kFormat + DataBytes("")), "no audio data"},
        {"not a wave", "not a RIFF file"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Levels(dir.Write("levels.wav", c.bytes)), c.levels);
    }
    EXPECT_EQ(Levels(dir.PathOf("missing.wav")), "no such file");
}

// A recording whose header was never finished: RIFF and data sizes of 0 or
// 0xFFFFFFFF with all the audio behind. The copy is sound and holds every
// byte of the audio; the input stays as it was. The audio ends where the
// chunks written behind it begin, which are kept byte for byte, and so is a
// format chunk of any length.
TEST(TidyCopy, UnfinishedHeaderBecomesSoundWithWhatStandsBehindTheAudio)
{
    TempDir dir;
    const std::string audio = Tone(3001) + "x"; // an odd length, cut inside a frame
    int made = 0;
    for (std::uint32_t riffSize : {0u, 0xFFFFFFFFu}) {
        for (std::uint32_t dataSize : {0u, 0xFFFFFFFFu}) {
            SCOPED_TRACE(testing::Message() << riffSize << " " << dataSize);
            const std::string input =
                RiffBytes().Head("RIFF", riffSize).Raw(kFormat).ChunkWithSize("data", dataSize, audio).Bytes();
            const WideString path = dir.Write("unfinished.wav", input);
            const std::string name = "mended" + std::to_string(made++) + ".wav";
            std::vector<std::string> changes;
            std::string problem;
            ASSERT_TRUE(Tidy(path, dir.PathOf(name), changes, problem)) << problem;
            EXPECT_EQ(dir.Read("unfinished.wav"), input);
            EXPECT_EQ(Check(dir.PathOf(name)), "チェック完了しました。\r\n");
            // The format as it stands; the audio in whole frames.
            const std::string output = dir.Read(name);
            EXPECT_EQ(output.substr(12, 24), kFormat);
            EXPECT_EQ(output.substr(44), Tone(3001));
            EXPECT_NE(std::find(changes.begin(), changes.end(), "data: a partial frame of 1 byte cut"), changes.end());
            EXPECT_EQ(changes.front(), "RIFF size " + FormatCount(riffSize) + " -> " + FormatCount(output.size() - 8));
            EXPECT_NE(std::find(changes.begin(), changes.end(),
                                "data: " + FormatCount(dataSize) + " bytes declared, 12,005 present"),
                      changes.end());
        }
    }

    const std::string format = FmtBytes(FormatBody(0xFFFE, 2, 44100, 16) + std::string(24, '\0'));
    const std::string behind =
        ListBytes("INFO", RiffBytes().Chunk("INAM", {"take\0", 5}).Bytes()) + RiffBytes().Chunk("PEAK", "abc").Bytes();
    const std::string sound = Riff(format + DataBytes(Tone(100)) + behind);
    for (std::uint32_t placeholder : {0u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(placeholder);
        std::string unfinished = sound;
        for (std::size_t at : {std::size_t{4}, format.size() + 16})
            std::memcpy(&unfinished[at], &placeholder, 4);
        std::vector<std::string> changes;
        std::string problem;
        const std::string name = "copy" + std::to_string(placeholder % 7) + ".wav";
        ASSERT_TRUE(Tidy(dir.Write("unfinished.wav", unfinished), dir.PathOf(name), changes, problem)) << problem;
        EXPECT_EQ(dir.Read(name), sound);
        EXPECT_NE(std::find(changes.begin(), changes.end(), "chunks behind the audio kept: LIST, PEAK"), changes.end());
    }
}


// Wherever the writer would lose something the copy is refused, and no
// file is left behind.
TEST(TidyCopy, RefusesWhereSomethingWouldBeLost)
{
    TempDir dir;
    const std::string data = DataBytes(Tone(4));
    const struct {
        std::string bytes, problem;
    } cases[] = {
        // Audio whose end can't be told: a chunk of an id no writer uses may
        // be audio or not.
        {RiffBytes().Head("RIFF", 0).Raw(kFormat).ChunkWithSize("data", 0xFFFFFFFF, Tone(4))
             .Chunk("a-b!", "").Chunk("LIST", "INFO").Bytes(),
         "where the audio of data at 36 ends can't be told: 16 bytes and then a-b!, LIST, or 24 bytes and then LIST"},
        {Riff(kFormat + data) + "junk", "junk at 60 is cut short inside its header"},
        {Riff(kFormat + data + "junk"), "4 bytes at 60 belong to no chunk that the copy keeps"},
        {Riff(kFormat + data) + Riff(""), "a second RIFF chunk at 60"},
        {Riff(data),
         "the data can't be written without a format of at least one channel and one byte per frame"},
        {"not a wave", "not a RIFF file"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> changes;
        std::string problem;
        EXPECT_FALSE(Tidy(dir.Write("in.wav", c.bytes), dir.PathOf("out.wav"), changes, problem));
        EXPECT_EQ(problem, c.problem);
        EXPECT_FALSE(std::filesystem::exists(dir.Native() + "/out.wav"));
    }
}

#ifdef SONDARA_CHECK_PROGRAM
// A tidy killed while it writes leaves its copy under a name that says it
// is unfinished; the next tidy of the same OUT removes it and makes the
// copy. Nothing else beside OUT is removed: not another name, and not a
// folder of the temporary's name nor a leftover given as the input, which
// refuse the copy instead.
TEST(TidyCopyProgram, NextRunRemovesTheCopyAKilledRunLeft)
{
    TempDir dir;
    const std::string sound = Riff(kFormat + DataBytes(Tone(2 * 1024 * 1024)));
    dir.Write("big.wav", sound);
    const std::string leftover = dir.Native() + "/out.wav.sondara-check-unfinished";
    // 8 MiB read 64 KiB at a time, each read 10 ms late: more than a second.
    const CheckerSettings slowReads =
        FaultSettings("big.wav", {"SONDARA_FAULT_SHORT_READS=65536", "SONDARA_FAULT_READ_DELAY_MS=10"});
    const int none = open("/dev/null", O_RDWR);
    const pid_t child = StartChecker(dir, {"--tidy", "out.wav", "big.wav"}, none, none, none, slowReads);
    close(none);
    const auto writtenSoFar = [&] {
        std::error_code missing;
        const std::uintmax_t size = std::filesystem::file_size(leftover, missing);
        return missing ? 0 : size;
    };
    // Killed once a mebibyte of the copy is out, or after ten seconds.
    for (int wait = 0; wait < 2000 && writtenSoFar() < (1u << 20); ++wait)
        usleep(5000);
    kill(child, SIGKILL);
    EXPECT_EQ(WaitForChecker(child), 128 + SIGKILL);
    ASSERT_TRUE(std::filesystem::exists(leftover));
    EXPECT_LT(std::filesystem::file_size(leftover), sound.size());
    EXPECT_FALSE(std::filesystem::exists(dir.Native() + "/out.wav"));

    dir.Write("out.wav.partial-0", "not the checker's");
    const CheckerOutcome again = RunChecker(dir, {"--tidy", "out.wav", "big.wav"});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.out, "nothing to mend; written to out.wav\n");
    EXPECT_EQ(dir.Read("out.wav"), sound);
    EXPECT_FALSE(std::filesystem::exists(leftover));
    EXPECT_EQ(dir.Read("out.wav.partial-0"), "not the checker's");

    dir.MakeDir("held.wav.sondara-check-unfinished");
    const CheckerOutcome held = RunChecker(dir, {"--tidy", "held.wav", "big.wav"});
    EXPECT_EQ(held.status, 1);
    EXPECT_EQ(held.out, "not written: can't make a file beside held.wav\n");
    EXPECT_TRUE(std::filesystem::is_directory(dir.Native() + "/held.wav.sondara-check-unfinished"));
    EXPECT_FALSE(std::filesystem::exists(dir.Native() + "/held.wav"));

    dir.Write("kept.wav.sondara-check-unfinished", sound);
    const CheckerOutcome itself = RunChecker(dir, {"--tidy", "kept.wav", "kept.wav.sondara-check-unfinished"});
    EXPECT_EQ(itself.status, 1);
    EXPECT_EQ(itself.out, "not written: the file has the name that the copy is written under until it is whole; "
                          "rename it first\n");
    EXPECT_EQ(dir.Read("kept.wav.sondara-check-unfinished"), sound);
    EXPECT_FALSE(std::filesystem::exists(dir.Native() + "/kept.wav"));
}
#endif

// An RF64 file, which the check takes for one that is not RIFF: the chunk
// list shows ds64's sizes beside the fields that defer to them, the levels
// are those of the same audio in RIFF, and a copy of it left unfinished
// (ds64's sizes 0) mends to the file it was.
TEST(Rf64, ListedMeasuredAndMended)
{
    TempDir dir;
    const std::string audio = Tone(500);
    const auto rf64 = [&](std::uint64_t riffSize, std::uint64_t dataSize) {
        RiffBytes ds64;
        ds64.U32(static_cast<std::uint32_t>(riffSize)).U32(0).U32(static_cast<std::uint32_t>(dataSize)).U32(0)
            .U32(static_cast<std::uint32_t>(dataSize / 4)).U32(0).U32(0);
        return RiffBytes().Head("RF64", 0xFFFFFFFF).Chunk("ds64", ds64.Bytes()).Raw(kFormat)
            .ChunkWithSize("data", 0xFFFFFFFF, audio).Bytes();
    };
    const std::string sound = rf64(4 + 36 + kFormat.size() + 8 + audio.size(), audio.size());
    const WideString path = dir.Write("sound.rf64.wav", sound);

    EXPECT_EQ(Check(path), "RIFF形式ではありません。\r\n");
    StringSink sink;
    EXPECT_TRUE(ListChunks(path, false, sink));
    EXPECT_EQ(sink.bytes, "RF64 at 0, 4,294,967,295 bytes (ds64: 2,072), form WAVE\n"
                         "  ds64 at 12, 28 bytes\n"
                         "  fmt  at 48, 16 bytes\n"
                         "  data at 72, 4,294,967,295 bytes (ds64: 2,000)\n");
    EXPECT_EQ(Levels(path), Levels(dir.Write("sound.wav", Riff(kFormat + DataBytes(audio)))));

    std::vector<std::string> changes;
    std::string problem;
    ASSERT_TRUE(Tidy(dir.Write("unfinished.rf64.wav", rf64(0, 0)), dir.PathOf("mended.wav"), changes, problem))
        << problem;
    EXPECT_EQ(dir.Read("mended.wav"), sound);
    EXPECT_EQ(changes, (std::vector<std::string>{"ds64 RIFF size 0 -> 2,072", "data: 0 bytes declared, 2,000 present"}));
}
