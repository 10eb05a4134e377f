#include "files/BufferPool.h"
#include "files/ByteBlock.h"
#include "files/FileStream.h"
#include "platform/File.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

// A first allocation is exact and zero-filled, also after the memory was
// given back by a size of 0; shrinking keeps the memory and the bytes;
// growing takes half the capacity more, or what is needed if that is more.
TEST(ByteBlockResize, ExactFirstThenByHalfTheCapacityKeepingTheBytes)
{
    ByteBlock block;
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        ASSERT_TRUE(block.Resize(10));
        EXPECT_EQ(block.Capacity(), 10u);
        EXPECT_EQ(std::count(block.Data(), block.Data() + 10, 0), 10);
        std::memset(block.Data(), 0xAB, 10);
        ASSERT_TRUE(block.Resize(0));
        EXPECT_EQ(block.Data(), nullptr);
        EXPECT_EQ(block.Capacity(), 0u);
    }

    ASSERT_TRUE(block.Resize(10));
    for (std::uint32_t i = 0; i < 10; ++i)
        block.Data()[i] = static_cast<std::uint8_t>(i + 1);
    const std::uint8_t* memory = block.Data();
    ASSERT_TRUE(block.Resize(4));
    ASSERT_TRUE(block.Resize(10));
    EXPECT_EQ(block.Data(), memory);
    EXPECT_EQ(block.Size(), 10u);
    for (std::uint32_t i = 0; i < 10; ++i)
        EXPECT_EQ(block.Data()[i], i + 1) << i;

    struct Case {
        std::uint32_t first, second, capacity;
    } cases[] = {
        {100, 101, 150}, // half the capacity is the larger step
        {100, 400, 400}, // the need is the larger step
        {1, 2, 2},
        {3, 4, 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.second);
        ByteBlock grown;
        ASSERT_TRUE(grown.Resize(c.first));
        grown.Data()[0] = 7;
        ASSERT_TRUE(grown.Resize(c.second));
        EXPECT_EQ(grown.Capacity(), c.capacity);
        EXPECT_EQ(grown.Size(), c.second);
        EXPECT_EQ(grown.Data()[0], 7);
        EXPECT_EQ(grown.Data()[c.second - 1], c.second - 1 == 0 ? 7 : 0);
    }
}

TEST(ByteBlockReadFrom, CutsToWhatCame)
{
    TempDir dir;
    FileStream stream;
    ASSERT_TRUE(stream.OpenPlain(dir.Write("six", "abcdef"), platform::kFileAttributeNormal));
    ByteBlock block;
    ASSERT_TRUE(block.Resize(10));
    EXPECT_TRUE(block.ReadFrom(stream));
    EXPECT_EQ(block.Size(), 6u);
    EXPECT_EQ(std::memcmp(block.Data(), "abcdef", 6), 0);

    EXPECT_FALSE(block.ReadFrom(stream)) << "nothing more comes";
    EXPECT_EQ(block.Size(), 0u);

    ByteBlock empty;
    EXPECT_FALSE(empty.ReadFrom(stream));
    EXPECT_EQ(empty.Data(), nullptr);
}

// Leases at the same time get different blocks; a block comes back to the
// next borrower with its memory.
TEST(BufferPoolLease, BlocksComeBackWithTheirMemory)
{
    ByteBlock* first = nullptr;
    {
        PooledBlockLease one;
        PooledBlockLease two;
        EXPECT_NE(&one.Block(), &two.Block());
        first = &one.Block();
        ASSERT_TRUE(one.Block().Resize(5000));
    }
    PooledBlockLease again;
    EXPECT_EQ(&again.Block(), first);
    EXPECT_EQ(again.Block().Capacity(), 5000u);
    ByteBlock stranger;
    EXPECT_FALSE(BufferPool::GetInstance().Release(&stranger));
}
