#include "support/RiffBytes.h"
#include "support/WaveFixture.h"

#include <gtest/gtest.h>

using ChunkBody = WaveFixture;

// Bodies below 1024 bytes are held, as far as the file has them; larger
// ones are skipped by a seek, and the walk goes on behind them.
TEST_F(ChunkBody, HeldBelow1024BytesAsFarAsTheFileGoes)
{
    const struct {
        std::uint32_t declared, present, held;
    } cases[] = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {1023, 1023, 1023}, {1024, 1024, 0}, {5000, 5000, 0}, {10, 3, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.declared << " " << c.present);
        std::string body(c.present, 'b');
        if (c.present > 0)
            body.back() = 'e';
        const bool whole = c.present == c.declared;
        const RiffBytes children = whole ? RiffBytes().Chunk("abcd", body).Chunk("next", "")
                                         : RiffBytes().ChunkWithSize("abcd", c.declared, body);
        ASSERT_TRUE(OpenBytes(Riff(children.Bytes())));
        ASSERT_EQ(Root()->GetChildren().Count(), whole ? 2u : 1u);
        const Chunk& chunk = *Root()->GetChildren().At(0);
        EXPECT_EQ(chunk.GetSize(), c.declared);
        ASSERT_EQ(chunk.GetBody().Size(), c.held);
        if (c.held > 0) {
            EXPECT_EQ(chunk.GetBody().Data()[c.held - 1], 'e');
        }
    }
}

TEST_F(ChunkBody, ManySmallChunksAreAllKept)
{
    RiffBytes children;
    for (int i = 0; i < 100000; ++i)
        children.Chunk("tiny", "ab");
    ASSERT_TRUE(OpenBytes(Riff(children.Bytes())));
    ASSERT_EQ(Root()->GetChildren().Count(), 100000u);
    EXPECT_EQ(Root()->GetChildren().At(99999)->GetPosition(), 12 + 99999 * 10);
}
