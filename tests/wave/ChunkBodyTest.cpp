#include "support/RiffBytes.h"
#include "support/TempDir.h"
#include "wave/Chunk.h"
#include "wave/WaveDocument.h"

#include <gtest/gtest.h>

#include <cstring>

// Bodies below 1024 bytes are held; larger ones are skipped by a seek.
TEST(ChunkBody, HeldBelow1024BytesOnly)
{
    TempDir dir;
    for (std::uint32_t length : {0u, 1u, 2u, 1023u, 1024u, 5000u}) {
        SCOPED_TRACE(length);
        std::string body(length, 'b');
        if (length > 0)
            body[length - 1] = 'e';
        WaveDocument document;
        ASSERT_TRUE(document.Open(dir.Write("body.wav", Riff(RiffBytes().Chunk("abcd", body).Chunk("next", "").Bytes()))));
        const Chunk& root = *document.GetChunks().At(0);
        ASSERT_EQ(root.GetChildren().Count(), 2u) << "the walk goes on behind the body";
        const Chunk& chunk = *root.GetChildren().At(0);
        EXPECT_EQ(chunk.GetSize(), length);
        if (length < 1024) {
            ASSERT_EQ(chunk.GetBody().Size(), length);
            if (length > 0) {
                EXPECT_EQ(chunk.GetBody().Data()[length - 1], 'e');
            }
        } else {
            EXPECT_EQ(chunk.GetBody().Size(), 0u);
        }
    }
}

TEST(ChunkBody, ShortReadOfAtLeastOneByteSucceeds)
{
    TempDir dir;
    WaveDocument document;
    // The body claims 10 bytes; 3 are there.
    ASSERT_TRUE(document.Open(dir.Write("short.wav", RiffBytes().Id("RIFF").U32(100).Id("WAVE").Id("abcd").U32(10).Raw("xyz").Bytes())));
    const Chunk& chunk = *document.GetChunks().At(0)->GetChildren().At(0);
    EXPECT_EQ(chunk.GetSize(), 10);
    EXPECT_EQ(chunk.GetBody().Size(), 3u);

    // None at all fails the child, which the root drops.
    ASSERT_TRUE(document.Open(dir.Write("none.wav", RiffBytes().Id("RIFF").U32(100).Id("WAVE").Id("abcd").U32(10).Bytes())));
    EXPECT_TRUE(document.GetChunks().At(0)->GetChildren().IsEmpty());
}

TEST(ChunkBody, ManySmallChunksAreAllKept)
{
    TempDir dir;
    RiffBytes children;
    for (int i = 0; i < 100000; ++i)
        children.Chunk("tiny", "ab");
    WaveDocument document;
    ASSERT_TRUE(document.Open(dir.Write("many.wav", Riff(children.Bytes()))));
    const Chunk& root = *document.GetChunks().At(0);
    ASSERT_EQ(root.GetChildren().Count(), 100000u);
    EXPECT_EQ(root.GetChildren().At(99999)->GetPosition(), 12 + 99999 * 10);
}
