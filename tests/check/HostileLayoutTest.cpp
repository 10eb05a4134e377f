// Files whose sizes would lead a chunk walk nowhere: the RF64 layout, the
// chunk list and the tidy copy refuse them at once and say why, while the
// files that recorders leave unfinished still read and mend as before.
#include "cli/ChunkList.h"
#include "cli/ConsoleSink.h"
#include "support/CheckerProcess.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"
#include "wave/Rf64File.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>

namespace {

constexpr std::uint64_t kMinus8 = ~std::uint64_t{7};
constexpr std::uint64_t kLargestSigned = std::numeric_limits<std::int64_t>::max();

// An RF64 file of 100 bytes: a ds64 chunk with these 64-bit sizes, a
// format, and a data chunk whose size field defers to ds64, with 20 bytes
// of audio.
std::string Rf64(std::uint64_t riffSize, std::uint64_t dataSize)
{
    const std::string ds64 = RiffBytes().U64(riffSize).U64(dataSize).U64(5).U32(0).Bytes();
    return RiffBytes().Head("RF64", 0xFFFFFFFF).Chunk("ds64", ds64).Raw(FmtBytes(FormatBody(1, 2, 44100, 16)))
        .ChunkWithSize("data", 0xFFFFFFFF, std::string(20, 'a')).Bytes();
}

} // namespace

// The layout refuses what no file can hold, and the chunk list says the
// reason in one line; sizes that a file can mean, past its end or left at
// 0 by a recording never finished, are walked, each chunk behind the last.
TEST(Rf64Layout, SizesNoFileCanHoldAreRefusedAndTheRestWalked)
{
    // Sizes that no file can hold, whose chunk would leave the walk where it
    // stands or send it round past the largest position.
    const struct {
        const char* name;
        std::string bytes;
        std::string reason;
    } hostile[] = {
        {"data size -8 as a signed number: the walk would stand still", Rf64(92, kMinus8),
         "the ds64 data size, 18,446,744,073,709,551,608 bytes, is more than a file can hold"},
        {"data size whose end wraps the position", Rf64(92, kLargestSigned - 3),
         "the ds64 data size, 9,223,372,036,854,775,804 bytes, is more than a file can hold"},
        {"RIFF size -1", Rf64(~std::uint64_t{0}, 20),
         "the ds64 RIFF size, 18,446,744,073,709,551,615 bytes, is more than a file can hold"},
        {"RIFF size whose end wraps the position", Rf64(kLargestSigned, 20),
         "the ds64 RIFF size, 9,223,372,036,854,775,807 bytes, is more than a file can hold"},
    };
    TempDir dir;
    for (const auto& c : hostile) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(c.bytes.size(), 100u);
        const WideString path = dir.Write("hostile.wav", c.bytes);
        Rf64Layout layout;
        std::string problem;
        EXPECT_FALSE(ReadRf64Layout(path, layout, problem));
        EXPECT_EQ(problem, c.reason);
        StringSink sink;
        EXPECT_FALSE(ListChunks(path, false, sink));
        EXPECT_EQ(sink.bytes, "(" + c.reason + ")\n");
#ifdef SONDARA_CHECK_PROGRAM
        // The checker ends the run at once with status 1 and the reason:
        // --tidy leaves neither the copy nor the temporary file it writes
        // first, and --chunks says the reason instead of listing the same
        // chunk for ever.
        const CheckerOutcome tidy = RunChecker(dir, {"--tidy", "out.wav", "hostile.wav"});
        EXPECT_EQ(tidy.status, 1);
        EXPECT_EQ(tidy.out, "not written: " + c.reason + "\n");
        EXPECT_FALSE(std::filesystem::exists(dir.Native() + "/out.wav"));
        EXPECT_FALSE(std::filesystem::exists(dir.Native() + "/out.wav.sondara-check-unfinished"));
        const CheckerOutcome chunks = RunChecker(dir, {"--chunks", "hostile.wav"});
        EXPECT_EQ(chunks.status, 1);
        EXPECT_LE(std::count(chunks.out.begin(), chunks.out.end(), '\n'), 5);
        EXPECT_NE(chunks.out.find(c.reason), std::string::npos);
#endif
    }

    const struct {
        const char* name;
        std::uint64_t riffSize, dataSize;
    } meant[] = {
        {"finished", 92, 20},
        {"never finished: both sizes 0", 0, 0},
        {"cut short: both sizes past the end", 1ULL << 40, 1ULL << 40},
        {"sizes of an exbibyte", 1ULL << 62, 1ULL << 62},
    };
    for (const auto& c : meant) {
        SCOPED_TRACE(c.name);
        Rf64Layout layout;
        std::string problem;
        ASSERT_TRUE(ReadRf64Layout(dir.Write("meant.wav", Rf64(c.riffSize, c.dataSize)), layout, problem)) << problem;
        EXPECT_EQ(layout.riffSize, static_cast<std::int64_t>(c.riffSize));
        EXPECT_EQ(layout.dataSize, static_cast<std::int64_t>(c.dataSize));
        // With a data size of 0 the audio's first bytes read as a chunk too.
        ASSERT_GE(layout.chunks.size(), 3u);
        std::int64_t last = 0;
        for (const Rf64Chunk& chunk : layout.chunks) {
            EXPECT_GT(chunk.position, last);
            EXPECT_LE(chunk.position + 8, layout.fileSize);
            last = chunk.position;
        }
        EXPECT_EQ(layout.dataPosition, 72);
    }
}
