#include "support/RiffBytes.h"
#include "support/WaveFixture.h"

#include "wave/FourCc.h"

#include <gtest/gtest.h>

namespace {

// 3000 stereo 16-bit frames, each holding its own number in both samples.
std::string NumberedFrames(std::uint32_t frames)
{
    RiffBytes samples;
    for (std::uint32_t i = 0; i < frames; ++i)
        samples.U16(static_cast<std::uint16_t>(i)).U16(static_cast<std::uint16_t>(i));
    return Wave(FormatBody(1, 2, 44100, 16), samples.Bytes());
}

} // namespace

using Frames = WaveFixture;

// The range rules: a negative first shortens the range, a negative count
// asks for 1024, the range is cut at the last frame, and an empty one is
// false. In plain and aligned mode alike.
TEST_F(Frames, RangesFollowTheRules)
{
    const struct {
        std::int64_t first;
        std::int32_t count;
        bool result;
        std::uint32_t frames, firstNumber;
    } cases[] = {
        {5, -1, true, 1024, 5}, {2990, -1, true, 10, 2990}, {0, -1, false, 0, 0},  {-10, 20, true, 10, 0},
        {-10, 10, false, 0, 0}, {2999, 5, true, 1, 2999},   {3000, 5, false, 0, 0}, {0, 3000, true, 3000, 0},
    };
    for (bool aligned : {false, true}) {
        WaveDocument read;
        read.SetAlignedIo(aligned);
        ASSERT_TRUE(read.Open(dir.Write("frames.wav", NumberedFrames(3000))));
        DataChunk& data = *read.GetDataChunk();
        ASSERT_EQ(data.GetFrameCount(), 3000);
        FrameBlock block;
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << (aligned ? "aligned " : "plain ") << c.first << " " << c.count);
            ASSERT_EQ(data.ReadFrames(data.GetFrameStream(), block, c.first, c.count), c.result);
            if (!c.result)
                continue;
            EXPECT_EQ(block.GetFrameCount(), c.frames);
            EXPECT_EQ(block.GetChannels(), 2u);
            EXPECT_EQ(ReadLittleEndian16(block.Data()), c.firstNumber);
            EXPECT_EQ(ReadLittleEndian16(block.Data() + 4 * (c.frames - 1)), c.firstNumber + c.frames - 1);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.Data()) % 32, 0u);
        }
    }
}

// A block takes at most 0x100000 frames of fewer than 25 bytes, up to 8
// channels, no more channels than bytes; a shape out of the limits leaves
// the block as it was. Growing keeps the content and zeros what is new.
TEST(FrameBlockLimits, RefusedShapesChangeNothing)
{
    FrameBlock block;
    ASSERT_TRUE(block.Prepare(4, 2, 4));
    block.Data()[15] = 7;
    const struct {
        std::uint32_t frames, channels, bytesPerFrame;
    } refused[] = {{0x100001, 2, 4}, {4, 2, 25}, {4, 9, 24}, {4, 3, 2}};
    for (const auto& r : refused) {
        EXPECT_FALSE(block.Prepare(r.frames, r.channels, r.bytesPerFrame));
        EXPECT_EQ(block.Length(), 16u);
    }
    ASSERT_TRUE(block.Prepare(0x100000, 8, 24));
    EXPECT_EQ(block.Length(), 0x100000u * 24);
    EXPECT_EQ(block.Data()[15], 7);
    EXPECT_EQ(block.Data()[16], 0);
    EXPECT_EQ(block.Data()[block.Length() - 1], 0);
}
