#include "support/RiffBytes.h"
#include "support/WaveFixture.h"
#include "wave/ChunkRun.h"

#include <gtest/gtest.h>

using ChunkBody = WaveFixture;

// Bodies below 1024 bytes are held, as far as the file has them; larger
// ones are skipped by a seek, and the walk goes on behind them.
TEST_F(ChunkBody, HeldBelow1024BytesAndManySmallOnesInEachTreeForm)
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

    // A file of many small chunks: the whole tree holds each; a walk for the
    // registry keeps only what holds a slot, also when the slot changes hands
    // many times; compact form keeps the small chunks as records in runs.
    const std::string format = FmtBytes(FormatBody(1, 2, 44100, 16));
    RiffBytes children;
    for (int i = 0; i < 100000; ++i)
        children.Chunk("tiny", "ab").Raw(i % 1000 == 0 ? format : "");
    children.Chunk("data", "abcd");
    const std::string bytes = Riff(children.Bytes());

    ASSERT_TRUE(OpenBytes(bytes));
    ASSERT_EQ(Root()->GetChildren().Count(), 100000u + 100 + 1);
    EXPECT_EQ(Root()->GetChildren().At(100100)->GetPosition(), 12 + 100000 * 10 + 100 * 24);

    document.SetTreeForm(TreeForm::SlotsOnly);
    ASSERT_TRUE(OpenBytes(bytes));
    ASSERT_EQ(Root()->GetChildren().Count(), 2u);
    EXPECT_EQ(Root()->GetChildren().At(0).get(), static_cast<const Chunk*>(document.GetFormatChunk()));
    EXPECT_EQ(Root()->GetChildren().At(1).get(), static_cast<const Chunk*>(document.GetDataChunk()));

    document.SetTreeForm(TreeForm::Compact);
    ASSERT_TRUE(OpenBytes(bytes));
    std::size_t records = 0, objects = 0;
    for (const auto& child : Root()->GetChildren()) {
        const auto* run = dynamic_cast<const ChunkRun*>(child.get());
        records += run ? run->Count() : 0;
        objects += run ? 0 : 1;
        if (run) {
            EXPECT_LE(run->Count(), ChunkRun::kMostRecords);
        }
    }
    EXPECT_EQ(records, 100000u);
    EXPECT_EQ(objects, 100u + 1);
}

