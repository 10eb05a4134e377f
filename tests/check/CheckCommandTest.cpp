#include "cli/CheckCommand.h"
#include "cli/CheckOptions.h"
#include "support/CheckerProcess.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#ifdef SONDARA_CHECK_PROGRAM
#include <unistd.h>

// sondara-check itself, started as its own process in a folder of sample
// files: what it prints on each stream and its exit status.
TEST(CheckCommandProgram, OptionsStreamsAndExitStatus)
{
    TempDir dir;
    dir.Write("sound.wav", SoundWave());
    dir.Write("--json", SoundWave());
    dir.Write("-x", "not a wave file");
    // A name that a spreadsheet would take for a formula stays text in CSV.
    dir.Write("=HYPERLINK(\"x\").wav", SoundWave());
    const std::string usage = "usage: sondara-check [--json | --jsonl | --csv] [--strict] [--policy FILE] [-j N] FILE...\n"
                              "       sondara-check [--json] [--chunks | --info | --levels [--loudness] [--target NAME]] FILE...\n"
                              "       sondara-check [--json] --tidy OUT FILE\n";
    const std::string soundChunks = "RIFF at 0, 52 bytes, form WAVE\n  fmt  at 12, 16 bytes\n  data at 36, 16 bytes\n";
    const std::string silentChannel = "peak -inf dBFS, RMS -inf dBFS, DC offset 0.000000, 0 samples at full scale\n";
    // The meters beyond the levels on two channels of silence.
    const auto silentMeters = [](const std::string& threshold) {
        std::string lines;
        for (const std::string& kind : {"silence below " + threshold + " dBFS: lead 0.000 s, tail 0.000 s, longest inside "
                                       "0.000 s, 0 silent runs inside of 0.100 s or more, digital zero throughout",
                                       std::string("0 runs of 3 or more equal samples at the peak, longest 0"),
                                       std::string("noise floor none (quietest 0.5 s window RMS, a window every 0.1 s)")})
            lines += "channel 1: " + kind + "\nchannel 2: " + kind + "\n";
        return lines + "channels 1-2: correlation none, lowest over 0.4 s blocks none, dual mono\n";
    };
    const std::string silentJson = "\"silence\": {\"lead\": 0.000091, \"tail\": 0.000091, \"longestInside\": 0.000000, "
                                   "\"runs\": 0, \"runStarts\": [], \"digitalZero\": true}, "
                                   "\"clippingRuns\": {\"runs\": 0, \"longest\": 0}, \"noiseFloor\": null";
    const std::string clear = "チェック完了しました。\n";
    const std::string notRiff = "RIFF形式ではありません。\n";
    const std::string noFile = "ファイルがありません。\n";
    const std::string clearJson = "\\u30c1\\u30a7\\u30c3\\u30af\\u5b8c\\u4e86\\u3057\\u307e\\u3057\\u305f\\u3002\\r\\n";
    const std::string notRiffJson = "RIFF\\u5f62\\u5f0f\\u3067\\u306f\\u3042\\u308a\\u307e\\u305b\\u3093\\u3002\\r\\n";
    const std::string notRiffFinding = "{\"code\": \"riff.not-riff\", \"severity\": \"error\", \"message\": "
                                       "\"The file is not a RIFF file.\", \"text\": \"" +
                                       notRiffJson.substr(0, notRiffJson.size() - 4) + "\"}";
    const std::string summaryOf2 = "2 files: 1 sound, 1 with findings, 0 with warnings, 0 unreadable\n";
    ExpectRuns(dir, {
        {{}, 2, "", usage},
        {{"--json"}, 2, "", usage},
        {{"-x"}, 2, "", "sondara-check: unknown option -x\n" + usage},
        {{"sound.wav"}, 0, clear, ""},
        {{"missing.wav"}, 1, noFile, ""},
        // A lone "-" reads the paths from standard input, one a line.
        {{"-"}, 1, "== sound.wav\n" + clear + "== missing.wav\n" + noFile + summaryOf2, "", "sound.wav\r\n\nmissing.wav"},
        {{"sound.wav", "missing.wav"}, 1, "== sound.wav\n" + clear + "== missing.wav\n" + noFile + summaryOf2, ""},
        {{"--json", "sound.wav"}, 0,
         "[\n  {\"path\": \"sound.wav\", \"report\": \"" + clearJson + "\", \"hasError\": false, \"findings\": [], " + kSoundWaveFactsJson + "}\n]\n", ""},
        {{"--json", "--csv", "sound.wav"}, 2, "", "sondara-check: --json, --jsonl and --csv go one at a time\n" + usage},
        {{"-j", "0", "sound.wav"}, 2, "", "sondara-check: -j takes a number from 1 to 256\n" + usage},
        {{"--chunks", "--csv", "sound.wav"}, 2, "", "sondara-check: --jsonl and --csv go with the check only\n" + usage},
        {{"--csv", "=HYPERLINK(\"x\").wav"}, 0,
         kCsvHeading + "\"'=HYPERLINK(\"\"x\"\").wav\",\"ok\",\"file.sound\",,\"\",,,,\"The file is sound.\",\"チェック完了しました。\"" +
             kSoundWaveFactsCsv + "\r\n", ""},
        // After "--" everything is a path, options and help included.
        {{"--", "--help"}, 1, noFile, ""},
        {{"--json", "--", "--json", "-x"}, 1,
         "[\n  {\"path\": \"--json\", \"report\": \"" + clearJson + "\", \"hasError\": false, \"findings\": [], " +
             kSoundWaveFactsJson + "},\n  {\"path\": \"-x\", \"report\": \"" + notRiffJson +
             "\", \"hasError\": true, \"findings\": [" + notRiffFinding + "], \"format\": {\"container\": null, "
             "\"formatTag\": null, \"subFormat\": null, \"sampleRate\": null, \"channels\": null, \"bits\": null, "
             "\"blockAlign\": null, \"frames\": null, \"seconds\": null}}\n]\n", ""},
        {{"--", "-x", "sound.wav"}, 1, "== -x\n" + notRiff + "== sound.wav\n" + clear + summaryOf2, ""},
        // The chunk list and the levels: a file that can't be listed or
        // measured says why in its place, and makes the status 1.
        {{"--chunks", "sound.wav"}, 0, soundChunks, ""},
        {{"--chunks", "missing.wav", "sound.wav"}, 1, "== missing.wav\n(no such file)\n== sound.wav\n" + soundChunks, ""},
        {{"--json", "--chunks", "--", "-x"}, 1, "[\n  {\"path\": \"-x\", \"error\": \"not a RIFF file\"}\n]\n", ""},
        // Silence gives its warning after the figures, and with --strict
        // fails; a meter's setting out of its range is bad usage.
        {{"--levels", "sound.wav"}, 0,
         "duration 0:00.000 (4 frames at 44,100 Hz, 16-bit)\nchannel 1: " + silentChannel + "channel 2: " + silentChannel +
             silentMeters("-60.0") + "注意：音声全体が無音のしきい値より小さいです。\n", ""},
        {{"--strict", "--silence-threshold", "-90", "sound.wav"}, 1,
         "duration 0:00.000 (4 frames at 44,100 Hz, 16-bit)\nchannel 1: " + silentChannel + "channel 2: " + silentChannel +
             silentMeters("-90.0") + "注意：音声全体が無音のしきい値より小さいです。\n", ""},
        {{"--clipping-run", "0", "sound.wav"}, 2, "", "sondara-check: --clipping-run takes a whole number from 1 to 1000000\n" + usage},
        {{"--json", "--levels", "sound.wav"}, 0,
         "[\n  {\"path\": \"sound.wav\", \"frames\": 4, \"sampleRate\": 44100, \"bits\": 16, \"seconds\": 0.000091, "
         "\"channels\": [{\"peak\": null, \"rms\": null, \"dcOffset\": 0.000000, \"fullScale\": 0, " + silentJson + "}, "
         "{\"peak\": null, \"rms\": null, \"dcOffset\": 0.000000, \"fullScale\": 0, " + silentJson + "}], "
         "\"silenceThreshold\": -60.00, \"silenceMinimum\": 0.100000, \"clippingRun\": 3, "
         "\"noiseFloorMethod\": \"quietest 0.5 s window RMS, a window every 0.1 s\", \"pairs\": [{\"channels\": [1, 2], "
         "\"correlation\": null, \"lowestBlockCorrelation\": null, \"dualMono\": true, \"inverse\": false}], "
         "\"findings\": [{\"code\": \"audio.silent\", \"severity\": \"warning\", "
         "\"message\": \"The whole file is below the silence threshold.\", \"text\": "
         "\"\\u97f3\\u58f0\\u5168\\u4f53\\u304c\\u7121\\u97f3\\u306e\\u3057\\u304d\\u3044\\u5024\\u3088\\u308a\\u5c0f\\u3055\\u3044\\u3067\\u3059\\u3002\"}]}\n]\n", ""},
        {{"--levels", "--chunks", "sound.wav"}, 2, "", "sondara-check: --chunks, --info, --levels and --tidy go one at a time\n" + usage},
        {{"--tidy"}, 2, "", "sondara-check: --tidy needs the path of the copy\n" + usage},
        {{"--tidy", "copy.wav", "sound.wav", "-"}, 2, "", "sondara-check: --tidy copies one file at a time\n" + usage},
        // The copy never goes over a file, its input included.
        {{"--tidy", "sound.wav", "sound.wav"}, 1, "not written: sound.wav exists; the copy goes to a new path only\n", ""},
        {{"--json", "--tidy", "copy.wav", "sound.wav"}, 0,
         "[\n  {\"path\": \"sound.wav\", \"output\": \"copy.wav\", \"written\": true, "
         "\"changes\": []}\n]\n", ""},
    });

    // Help goes before any check, wherever it stands among the options: the
    // usage and then a word on each option, whose first line stands for it.
    const CheckerOutcome help = RunChecker(dir, {"sound.wav", "--help", "-x"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_TRUE(help.out.starts_with(usage + "Checks WAV files as the Sondara window does and prints a report for each,\n"))
        << help.out;

    // The table of options is the command line's one list of them: each of its
    // spellings is known, and what merely begins like one is not.
    for (const CheckOption& option : CheckOptionTable()) {
        SCOPED_TRACE(option.spelling);
        const CheckerOutcome outcome = RunChecker(dir, {option.spelling});
        EXPECT_EQ(outcome.err.find("unknown option"), std::string::npos) << outcome.err;
    }
    for (const std::string unknown : {"--jsonx", "-0x", "--tidyOUT", "---"}) {
        SCOPED_TRACE(unknown);
        const CheckerOutcome outcome = RunChecker(dir, {unknown, "sound.wav"});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.err.rfind("sondara-check: unknown option " + unknown + "\n", 0), 0u) << outcome.err;
    }
}

// A folder given as FILE: every .wav file below it in the order of the
// names, whatever the number of checks at once; a link back up and a link
// to nothing said in their places; warnings count for the status only with
// --strict; --jsonl and --csv as scripts and spreadsheets read them.
TEST(CheckCommandProgram, FoldersInOrderWithLoopsBrokenLinksAndTheirFormats)
{
    TempDir dir;
    for (const char* folder : {"deliveries", "deliveries/a", "deliveries/many"})
        dir.MakeDir(folder);
    dir.Write("deliveries/b.WAV", SoundWave());
    dir.Write("deliveries/a/z.wav", SoundWave());
    dir.Write("deliveries/a/notes.txt", "not a wave file");
    dir.Write("deliveries/c.wav", SoundWave() + "ab");
    for (int i = 0; i < 30; ++i)
        dir.Write("deliveries/many/" + std::to_string(100 + i) + ".wav", i % 7 == 3 ? "not riff" : SoundWave());
    ASSERT_EQ(symlink("..", (dir.Native() + "/deliveries/a/up").c_str()), 0);
    ASSERT_EQ(symlink("gone.wav", (dir.Native() + "/deliveries/d.wav").c_str()), 0);

    // The order of the walk, with one check at a time.
    const CheckerOutcome serial = RunChecker(dir, {"--jsonl", "-j", "1", "deliveries"});
    const std::vector<std::string> order = JsonPaths(serial.out);
    ASSERT_EQ(order.size(), 35u);
    EXPECT_EQ(std::vector<std::string>(order.begin(), order.begin() + 6),
              (std::vector<std::string>{"deliveries/a/up", "deliveries/a/z.wav", "deliveries/b.WAV", "deliveries/c.wav",
                                        "deliveries/d.wav", "deliveries/many/100.wav"}));
    EXPECT_NE(serial.out.find("{\"type\": \"unreadable\", \"path\": \"deliveries/a/up\", \"report\": null, \"hasError\": true, "
                                   "\"findings\": [{\"code\": \"folder.link-loop\""), std::string::npos);
    EXPECT_NE(serial.out.find("\"path\": \"deliveries/d.wav\", \"report\": null, \"hasError\": true, \"findings\": [{\"code\": \"file.broken-link\""), std::string::npos);
    EXPECT_NE(serial.out.find("\"code\": \"riff.trailing-bytes\""), std::string::npos);
    EXPECT_TRUE(serial.out.ends_with(
        "{\"type\": \"summary\", \"files\": 35, \"sound\": 28, \"withFindings\": 4, \"withWarnings\": 1, \"unreadable\": 2}\n"));
    EXPECT_EQ(serial.status, 1);

    // Many checks at once print the very same.
    const CheckerOutcome parallel = RunChecker(dir, {"--jsonl", "-j7", "deliveries"});
    EXPECT_EQ(parallel.out, serial.out);

    // Warnings alone: exit 0, or 1 with --strict.
    EXPECT_EQ(RunChecker(dir, {"deliveries/c.wav"}).status, 0);
    EXPECT_EQ(RunChecker(dir, {"--strict", "deliveries/c.wav"}).status, 1);
    const CheckerOutcome text = RunChecker(dir, {"deliveries/c.wav"});
    EXPECT_EQ(text.out, "チェック完了しました。\n注意：RIFFチャンクの後ろに余分なデータがあります。 [宣言 52, 実際 54, 位置 0]\n");

    // CSV: a byte order mark, a header, a row a finding, a row for a sound file.
    const CheckerOutcome csv = RunChecker(dir, {"--csv", "deliveries/b.WAV", "deliveries/c.wav"});
    EXPECT_EQ(csv.out,
              kCsvHeading + "\"deliveries/b.WAV\",\"ok\",\"file.sound\",,\"\",,,,\"The file is sound.\",\"チェック完了しました。\"" +
                  kSoundWaveFactsCsv + "\r\n\"deliveries/c.wav\",\"warning\",\"riff.trailing-bytes\",0,\"RIFF\",,52,54,"
                  "\"There are bytes after the RIFF chunk. (declared 52, actual 54, at offset 0)\","
                  "\"RIFFチャンクの後ろに余分なデータがあります。 [宣言 52, 実際 54, 位置 0]\"" + kSoundWaveFactsCsv + "\r\n");
}
// Each mode reads what its input is once, through one open, and hands that
// to all that read the file; only the measuring pass opens it once more, to
// read the audio past the system's cache.
TEST(CheckCommandProgram, EachModeOpensItsInputOnce)
{
    TempDir dir;
    dir.Write("take.wav", SoundWave(44100));
    const std::string audio(4000, '\x11');
    const std::string ds64 = RiffBytes().U64(4 + 36 + 24 + 8 + audio.size()).U64(audio.size()).U64(1000).U32(0).Bytes();
    dir.Write("take64.wav", RiffBytes().Id("RF64").U32(0xFFFFFFFF).Id("WAVE").Chunk("ds64", ds64)
                                .Chunk("fmt ", FormatBody(1, 2, 44100, 16)).ChunkWithSize("data", 0xFFFFFFFF, audio).Bytes());
    const struct {
        std::vector<std::string> arguments;
        int opens;
    } cases[] = {
        {{"take.wav"}, 1},
        {{"--levels", "take.wav"}, 2},
        {{"--levels", "--loudness", "take.wav"}, 2},
        {{"--chunks", "take.wav"}, 1},
        {{"--info", "take.wav"}, 1},
        {{"--tidy", "copy.wav", "take.wav"}, 1},
        {{"--levels", "take64.wav"}, 2},
        {{"--tidy", "copy64.wav", "take64.wav"}, 1},
    };
    const std::string count = dir.Native() + "/opens.txt";
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const CheckerOutcome outcome =
            RunChecker(dir, c.arguments, "", FaultSettings(c.arguments.back(), {"SONDARA_FAULT_OPEN_COUNT=" + count}));
        EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
        EXPECT_EQ(dir.Read("opens.txt"), std::to_string(c.opens) + "\n");
    }
}
#endif
