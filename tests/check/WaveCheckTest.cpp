#include "check/WaveCheck.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

struct CheckOutcome {
    std::u16string report;
    bool hasError;
};

CheckOutcome Check(const WideString& path)
{
    CheckReport report(u"left over\r\n");
    bool hasError = false;
    RunWaveCheck(path, report, hasError);
    return {report.ToU16String(), hasError};
}

const std::string kFmt = FmtBytes(FormatBody(1, 2, 44100, 16));
const std::string kFrames(16, '\0');

const std::u16string kAllClear = u"チェック完了しました。\r\n";

} // namespace

// The report of every file a writer or a broken recording leaves, and of
// a path with no file to check.
TEST(WaveCheck, ReportsOfFilesAndOfPathsWithNone)
{
    const std::string sound = kFmt + DataBytes(kFrames);
    struct Case {
        const char* name;
        std::string bytes;
        std::u16string report;
    } cases[] = {
        {"sound PCM", Riff(sound), kAllClear},
        {"empty file", "", u"フォーマット構造がありません。\r\nデータ構造がありません。\r\n"},
        {"three bytes", "RIF", u"フォーマット構造がありません。\r\nデータ構造がありません。\r\n"},
        {"not RIFF", "hello, this is text", u"RIFF形式ではありません。\r\n"},
        {"RF64", RiffBytes().Head("RF64", 0xFFFFFFFF).Raw(sound).Bytes(), u"RIFF形式ではありません。\r\n"},
        {"RIFF at a later aligned offset", "junk" + Riff(sound), u"RIFF構造にエラーがあります。\r\n"},
        {"float stereo 48 kHz", Wave(FormatBody(3, 2, 48000, 32), kFrames),
         u"PCMではありません。 [0003]\r\nビット数が8/16/24Bitではありません。 [32]\r\n"},
        {"extensible tag", Wave(FormatBody(0xFFFE, 2, 44100, 16), kFrames), kAllClear},
        {"tag above 0xFFF", Wave(FormatBody(0xABCD, 1, 8000, 8), kFrames), u"PCMではありません。 [ABCD]\r\n"},
        {"rate 192000", Wave(FormatBody(1, 2, 192000, 16), kFrames), kAllClear},
        {"rate 1", Wave(FormatBody(1, 1, 1, 8), kFrames), kAllClear},
        {"rate 192001", Wave(FormatBody(1, 2, 192001, 16), kFrames),
         u"サンプリング周波数が0～19200Hzではありません。 [192001]\r\n"},
        {"rate 0", Wave(FormatBody(1, 2, 0, 16), kFrames), u"サンプリング周波数が0～19200Hzではありません。 [0]\r\n"},
        {"rate above 2^31 prints negative", Wave(FormatBody(1, 2, 0x80000000u, 16), kFrames),
         u"サンプリング周波数が0～19200Hzではありません。 [-2147483648]\r\n"},
        {"six channels", Wave(FormatBody(1, 6, 44100, 16), std::string(24, '\0')), u"チャンネル数が1/2チャンネルではありません。 [6]\r\n"},
        {"8 bits mono", Wave(FormatBody(1, 1, 22050, 8), kFrames), kAllClear},
        {"everything wrong", Wave(FormatBody(2, 0, 0, 0), kFrames),
         u"PCMではありません。 [0002]\r\nサンプリング周波数が0～19200Hzではありません。 [0]\r\n"
         u"ビット数が8/16/24Bitではありません。 [0]\r\nチャンネル数が1/2チャンネルではありません。 [0]\r\n"
         u"サンプル数が正しくありません。 [-1]\r\n"},
        {"data of size 0 at the end", Riff(kFmt + RiffBytes().Id("data").U32(0).Bytes()),
         u"データ情報のサイズが正しくありません。 [0]\r\nサンプル数が正しくありません。 [0]\r\n"},
        {"data of size 0 with frames behind", Riff(kFmt + RiffBytes().Id("data").U32(0).Bytes()) + std::string(64, 'a'),
         u"データ情報のサイズが正しくありません。 [0]\r\n"},
        {"no fmt", Riff(DataBytes(kFrames)), u"フォーマット構造がありません。\r\nサンプル数が正しくありません。 [-1]\r\n"},
        {"no data", Riff(kFmt), u"データ構造がありません。\r\n"},
        {"fmt behind data", Riff(DataBytes(kFrames) + kFmt), kAllClear},
        {"structure error later", Riff(sound) + "abcd\x01", u"RIFF構造にエラーがあります。\r\n"},
        {"structure error and bad format", Wave(FormatBody(3, 2, 48000, 32), kFrames) + "ab\x01\x02\x03",
         u"RIFF構造にエラーがあります。\r\nPCMではありません。 [0003]\r\nビット数が8/16/24Bitではありません。 [32]\r\n"},
        {"RIFF header cut short", "RIFF\x10", u"RIFF構造にエラーがあります。\r\nフォーマット構造がありません。\r\nデータ構造がありません。\r\n"},
        {"only a LIST chunk", RiffBytes().Head("LIST", 14, "INFO").Chunk("INAM", "take").Bytes(),
         u"フォーマット構造がありません。\r\nデータ構造がありません。\r\n"},
        {"LIST of size 3 hides what follows", Riff(RiffBytes().Head("LIST", 3, "abcd").Bytes() + sound),
         u"フォーマット構造がありません。\r\nデータ構造がありません。\r\n"},
        {"INFO and bext beside sound chunks",
         Riff(RiffBytes().Head("LIST", 16, "INFO").Chunk("INAM", "take\0").Chunk("bext", std::string(602, 'b')).Bytes() + sound),
         kAllClear},
        {"fmt of 1024 bytes", Wave(FormatBody(1, 2, 44100, 16) + std::string(1008, '\0'), kFrames),
         u"PCMではありません。 [0000]\r\nサンプリング周波数が0～19200Hzではありません。 [0]\r\n"
         u"ビット数が8/16/24Bitではありません。 [0]\r\nチャンネル数が1/2チャンネルではありません。 [0]\r\n"
         u"サンプル数が正しくありません。 [-1]\r\n"},
    };
    TempDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CheckOutcome outcome = Check(dir.Write("case.wav", c.bytes));
        EXPECT_EQ(outcome.report, c.report);
        EXPECT_EQ(outcome.hasError, c.report != kAllClear);
    }
    for (const WideString& path : {dir.PathOf("missing.wav"), dir.MakeDir("x.wav"), WideString()}) {
        const CheckOutcome outcome = Check(path);
        EXPECT_EQ(outcome.report, u"ファイルがありません。\r\n");
        EXPECT_TRUE(outcome.hasError);
    }
    // The frames come from the real length of the file, here 3 GiB of a
    // sparse file: the size is reported, the sample count is usable.
    const WideString big = dir.Write("big.wav", Riff(kFmt + RiffBytes().Id("data").U32(0).Bytes()));
    std::filesystem::resize_file(std::filesystem::path(big.ToU16String()), 3ull << 30);
    EXPECT_EQ(Check(big).report, u"データ情報のサイズが正しくありません。 [0]\r\n");
}
