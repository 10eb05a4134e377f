#include "support/CheckerProcess.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#ifdef SONDARA_CHECK_PROGRAM
#include <filesystem>
#include <fstream>

// A name on POSIX is bytes: one that isn't UTF-8, as old archives hold
// (Latin-1 here), goes from the walk, the arguments and standard input to
// the open unchanged, and JSON carries it as the lone surrogates that stand
// for its bytes.
namespace {

// TempDir names files through UTF-16, which a name of other bytes can't
// pass: this writes under the name's own bytes.
void WriteRaw(const TempDir& dir, const std::string& name, const std::string& bytes)
{
    std::ofstream(dir.Native() + "/" + name, std::ios::binary) << bytes;
}

const std::string kLatin1Name = "archive/caf\xE9.wav";
const std::string kClear = "チェック完了しました。\n";
const std::string kClearJson = "\\u30c1\\u30a7\\u30c3\\u30af\\u5b8c\\u4e86\\u3057\\u307e\\u3057\\u305f\\u3002\\r\\n";

} // namespace

TEST(PathBytesProgram, NameOfOtherBytesIsFoundOpenedAndPrintedAsItStands)
{
    TempDir dir;
    dir.MakeDir("archive");
    WriteRaw(dir, kLatin1Name, SoundWave());
    const std::string json =
        "[\n  {\"path\": \"archive/caf\\udce9.wav\", \"report\": \"" + kClearJson + "\", \"hasError\": false, \"findings\": [], " + kSoundWaveFactsJson + "}\n]\n";
    ExpectRuns(dir, {
        {{"archive"}, 0, kClear},
        {{kLatin1Name}, 0, kClear},
        {{"-"}, 0, kClear, "", kLatin1Name + "\n"},
        {{"-"}, 0, kClear, "", kLatin1Name + "\r\n"},
        {{"--json", "archive"}, 0, json},
        {{"--json", kLatin1Name}, 0, json},
        {{"--json", "-"}, 0, json, "", kLatin1Name},
        {{"--jsonl", "archive"}, 0,
         "{\"type\": \"file\", \"path\": \"archive/caf\\udce9.wav\", \"report\": \"" + kClearJson +
             "\", \"hasError\": false, \"findings\": [], " + kSoundWaveFactsJson + "}\n"
             "{\"type\": \"summary\", \"files\": 1, \"sound\": 1, \"withFindings\": 0, \"withWarnings\": 0, \"unreadable\": 0}\n"},
        {{"--chunks", kLatin1Name}, 0, "RIFF at 0, 52 bytes, form WAVE\n  fmt  at 12, 16 bytes\n  data at 36, 16 bytes\n"},
        // Text and CSV print a path's own bytes, so that a script can open
        // what they name.
        {{"--csv", kLatin1Name}, 0,
         kCsvHeading + "\"" + kLatin1Name + "\",\"ok\",\"file.sound\",,\"\",,,,\"The file is sound.\",\"チェック完了しました。\"" +
             kSoundWaveFactsCsv + "\r\n"},
        {{"--tidy", "text\xE9.wav", kLatin1Name}, 0, "nothing to mend; written to text\xE9.wav\n"},
    });

    // A copy goes to the very name it is given.
    EXPECT_EQ(RunChecker(dir, {"--json", "--tidy", "copy\xE9.wav", kLatin1Name}).status, 0);
    EXPECT_TRUE(std::filesystem::exists(dir.Native() + "/copy\xE9.wav"));
    EXPECT_FALSE(std::filesystem::exists(dir.Native() + "/copy\xEF\xBF\xBD.wav"));

    // A folder's names, each as it stands.
    WriteRaw(dir, "archive/z.wav", SoundWave());
    const CheckerOutcome text = RunChecker(dir, {"archive"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out, "== " + kLatin1Name + "\n" + kClear + "== archive/z.wav\n" + kClear +
                            "2 files: 2 sound, 0 with findings, 0 with warnings, 0 unreadable\n");
}

#endif
