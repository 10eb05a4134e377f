#include "base/Utf8.h"
#include "check/FileCheck.h"
#include "check/WaveCheck.h"
#include "cli/CheckPrinter.h"
#include "cli/LevelsPrinter.h"
#include "layouttext/CsvTokeniser.h"
#include "layouttext/LayoutDocument.h"
#include "measure/AudioMd5.h"
#include "measure/Levels.h"
#include "policy/Policy.h"
#include "support/ReportGrammar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

// The files of one folder of the fuzzing corpora in the source tree.
std::vector<fs::path> CorpusFiles(const std::string& folder)
{
    std::vector<fs::path> files;
    const fs::path root = fs::path(SONDARA_FUZZ_DIR) / folder;
    for (const auto& entry : fs::directory_iterator(root)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    return files;
}

std::u16string Units(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::u16string units(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    return units;
}

} // namespace

// Every input that ever broke the reader, every hostile file written on
// purpose and every seed: the check ends, twice alike, in a report made of
// its own lines.
TEST(RegressionCorpus, WaveFilesGiveWellFormedReports)
{
    std::vector<fs::path> files = CorpusFiles("regressions/wave");
    std::vector<fs::path> seeds = CorpusFiles("seeds/wave");
    files.insert(files.end(), seeds.begin(), seeds.end());
    ASSERT_GT(files.size(), 20u);
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        const WideString path(file.u16string());
        CheckReport first, second;
        bool firstError = false, secondError = false;
        RunWaveCheck(path, first, firstError);
        RunWaveCheck(path, second, secondError);
        EXPECT_EQ(first, second);
        EXPECT_EQ(firstError, secondError);
        std::string why;
        EXPECT_TRUE(IsWellFormedReport(first, firstError, why)) << why;
    }
}

// The same inputs, and those of the levels, read from memory under their
// own names: the check, its warnings and the levels are those of the file.
TEST(RegressionCorpus, BytesInMemoryGiveWhatTheirFileGives)
{
    std::vector<fs::path> files = CorpusFiles("regressions/wave");
    for (const char* folder : {"seeds/wave", "regressions/levels", "seeds/levels"}) {
        const std::vector<fs::path> more = CorpusFiles(folder);
        files.insert(files.end(), more.begin(), more.end());
    }
    const auto findingsJson = [](const FileCheck& check) {
        std::string json;
        for (const Finding& finding : check.findings)
            AppendFindingJson(json, finding);
        return json;
    };
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        std::ifstream in(file, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        const MemoryBytes memory{reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
        // The bytes go by a name that no file has: nothing is read from disk.
        const WideString path(file.u16string()), name(u"held:" + file.filename().u16string());
        FileLayout onDisk(path, kCheckReading), held(memory, name, kCheckReading);
        FileCheck fromDisk, fromMemory;
        CheckFile(onDisk, fromDisk);
        CheckFile(held, fromMemory);
        EXPECT_EQ(fromMemory.report, fromDisk.report);
        EXPECT_EQ(fromMemory.hasError, fromDisk.hasError);
        EXPECT_EQ(findingsJson(fromMemory), findingsJson(fromDisk));

        FileLayout diskLevels(path, kLevelsReading), heldLevels(memory, name, kLevelsReading);
        LevelReport diskReport, heldReport;
        std::string diskProblem, heldProblem;
        AudioMd5 diskMd5, heldMd5;
        const bool measured = MeasureLevels(diskLevels, diskReport, diskProblem, true, {}, {}, &diskMd5);
        EXPECT_EQ(MeasureLevels(heldLevels, heldReport, heldProblem, true, {}, {}, &heldMd5), measured);
        EXPECT_EQ(heldProblem, diskProblem);
        EXPECT_EQ(heldMd5.IsComputed(), diskMd5.IsComputed());
        EXPECT_TRUE(heldMd5.GetDigest() == diskMd5.GetDigest());
        if (measured) {
            EXPECT_EQ(FormatLevelsJson(heldReport), FormatLevelsJson(diskReport));
        }
    }
}

// Every policy text that ever broke the reader (four reached undefined
// behaviour in its whitespace test, which the sanitizer builds stop at) and
// every seed: each is a policy or a problem that names its file and line.
TEST(RegressionCorpus, PolicyTextsReadOrNameTheirLine)
{
    std::vector<fs::path> files = CorpusFiles("regressions/policy");
    std::vector<fs::path> seeds = CorpusFiles("seeds/policy");
    files.insert(files.end(), seeds.begin(), seeds.end());
    ASSERT_GE(files.size(), 13u);
    std::size_t read = 0;
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        std::ifstream in(file, std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        Policy policy;
        std::string problem;
        if (ParsePolicy(text, "fuzz.toml", policy, problem))
            ++read;
        else
            EXPECT_TRUE(problem.starts_with("fuzz.toml:") && problem.size() > 12) << problem;
    }
    EXPECT_EQ(read, seeds.size());
}

// The grammar that the corpus and the fuzzer hold reports to: the lines of
// the check in their order, their values in their forms, and nothing else.
TEST(RegressionCorpus, ReportGrammarTellsReportsFromOtherText)
{
    const struct {
        std::u16string report;
        bool hasError;
        bool wellFormed;
    } cases[] = {
        {u"チェック完了しました。\r\n", false, true},
        {u"チェック完了しました。\r\n", true, false},
        {u"チェック完了しました。", false, false},
        {u"", true, false},
        {u"PCMではありません。 [0003]\r\nビット数が8/16/24Bitではありません。 [32]\r\n", true, true},
        {u"PCMではありません。 [FFFE1]\r\n", true, true},
        {u"PCMではありません。 [003]\r\n", true, false},
        {u"PCMではありません。 [00a3]\r\n", true, false},
        {u"PCMではありません。\r\n", true, false},
        {u"データ情報のサイズが正しくありません。 [-4]\r\nサンプル数が正しくありません。 [0]\r\n", true, true},
        {u"データ情報のサイズが正しくありません。 [04]\r\n", true, false},
        {u"データ情報のサイズが正しくありません。 [-]\r\n", true, false},
        {u"データ情報のサイズが正しくありません。 [1] \r\n", true, false},
        {u"サンプル数が正しくありません。 [1]\r\nデータ情報のサイズが正しくありません。 [1]\r\n", true, false},
        {u"ファイルがありません。\r\nRIFF形式ではありません。\r\n", true, false},
        {u"データ構造がありません。\r\nサンプル数が正しくありません。 [1]\r\n", true, false},
        {u"フォーマット構造がありません。\r\nチャンネル数が1/2チャンネルではありません。 [6]\r\n", true, false},
        {u"フォーマット構造がありません。\r\nデータ構造がありません。\r\n", true, true},
        {u"RIFF構造にエラーがあります。\r\nほかの行\r\n", true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(WideToUtf8(c.report));
        std::string why;
        EXPECT_EQ(IsWellFormedReport(WideString(c.report), c.hasError, why), c.wellFormed) << why;
    }
}

// What the parsers make of every layout and CSV input of the corpora, as one
// line a file: the sections with their entries, or the rows with their
// items, hashed. The lines must be those recorded in parse-digests.txt, so a
// change in what either parser reads out of these texts shows, as does a
// corpus that went missing. SONDARA_RECORD_DIGESTS=1 records them anew.
TEST(RegressionCorpus, LayoutTextsParseAsRecorded)
{
    std::string digests;
    std::size_t files = 0;
    for (const char* folder : {"regressions/layout", "seeds/layout", "regressions/csv", "seeds/csv"}) {
        std::vector<fs::path> paths = CorpusFiles(folder);
        std::sort(paths.begin(), paths.end());
        for (const fs::path& file : paths) {
            const WideString text(Units(file));
            std::u16string made;
            LayoutDocument document;
            made += document.Parse(text) ? u"parsed\n" : u"refused\n";
            for (std::int32_t i = 0; i < document.GetSectionCount(); ++i) {
                made += u"[" + document.GetSectionName(i).ToU16String() + u"]\n";
                WideString key, value;
                for (std::int32_t e = 0; document.GetSectionMap(i).GetEntry(e, key, value); ++e)
                    made += key.ToU16String() + u"=" + value.ToU16String() + u"\n";
            }
            CsvTokeniser tokeniser;
            made += tokeniser.Parse(text) ? u"parsed\n" : u"refused\n";
            for (std::size_t r = 0; r < tokeniser.rows.Count(); ++r) {
                for (std::size_t i = 0; i < tokeniser.rows.At(r).Count(); ++i)
                    made += tokeniser.rows.At(r).At(i).ToU16String() + u"\x1f";
                made += u"\n";
            }
            std::uint64_t hash = 14695981039346656037ull; // FNV-1a over the UTF-16 units
            for (const char16_t unit : made) {
                hash = (hash ^ (unit & 0xFF)) * 1099511628211ull;
                hash = (hash ^ (unit >> 8)) * 1099511628211ull;
            }
            char line[32];
            std::snprintf(line, sizeof line, " %016llx\n", static_cast<unsigned long long>(hash));
            digests += std::string(folder) + "/" + file.filename().string() + line;
            ++files;
        }
    }
    EXPECT_GT(files, 100u);
    const fs::path recorded = fs::path(SONDARA_TESTS_DIR) / "check/parse-digests.txt";
    if (std::getenv("SONDARA_RECORD_DIGESTS")) {
        std::ofstream(recorded, std::ios::binary) << digests;
        return;
    }
    std::ifstream in(recorded, std::ios::binary);
    const std::string expected((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(digests, expected);
}
