#include "files/FileStream.h"
#include "platform/File.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Pattern(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

} // namespace

// A stream that is closed, or failed to open a missing file or a folder,
// reads, writes and seeks nothing.
TEST(FileStream, OpenCloseAndReopen)
{
    TempDir dir;
    FileStream stream;
    for (const WideString& path : {dir.PathOf("missing"), dir.MakeDir("folder")}) {
        EXPECT_FALSE(stream.OpenPlain(path, platform::kFileAttributeNormal));
        EXPECT_FALSE(stream.IsOpen());
        EXPECT_TRUE(stream.GetPath().IsEmpty());
        char byte = 0;
        EXPECT_EQ(stream.Read(&byte, 1), 0u);
        EXPECT_EQ(stream.Write(&byte, 1), 0u);
        EXPECT_FALSE(stream.SeekTo(0));
        EXPECT_EQ(stream.Tell(), 0);
        EXPECT_EQ(stream.GetSize(), 0);
        WideString text;
        EXPECT_FALSE(stream.ReadText(text, 4));
    }

    WideString path = dir.Write("a", "hello");
    ASSERT_TRUE(stream.OpenPlain(path, platform::kFileAttributeNormal));
    EXPECT_EQ(stream.GetPath(), path);
    EXPECT_EQ(stream.GetSize(), 5);
    stream.Close();
    EXPECT_TRUE(stream.GetPath().IsEmpty());
    ASSERT_TRUE(stream.OpenPlain(path, platform::kFileAttributeNormal));
    char bytes[8] = {};
    EXPECT_EQ(stream.Read(bytes, 8), 5u);
    EXPECT_EQ(std::string(bytes, 5), "hello");

    // Opening again without Close reads the new file from its start, in
    // every mode and from every mode.
    const WideString other = dir.Write("b", "world!");
    for (int from = 0; from < 3; ++from) {
        for (int to = 0; to < 3; ++to) {
            SCOPED_TRACE(testing::Message() << from << " -> " << to);
            const auto open = [&](int mode, const WideString& file) {
                const bool opened = mode == 1 ? stream.OpenAligned(file, platform::kFileAttributeNormal)
                                              : stream.OpenPlain(file, platform::kFileAttributeNormal);
                return opened && (mode != 2 || stream.EnableReadAhead(64));
            };
            ASSERT_TRUE(open(from, path));
            EXPECT_EQ(stream.Read(bytes, 2), 2u);
            ASSERT_TRUE(open(to, other));
            EXPECT_EQ(stream.GetPath(), other);
            EXPECT_EQ(stream.Tell(), 0);
            EXPECT_EQ(stream.GetSize(), 6);
            EXPECT_EQ(stream.Read(bytes, 8), 6u);
            EXPECT_EQ(std::string(bytes, 6), "world!");
        }
    }
}

// Read-ahead and aligned mode must not change any result of plain mode:
// the same sequence of operations runs on all three and is compared step by
// step. The file is longer than the aligned buffer of 1024 sectors, so that
// long reads cross its loads; short reads straddle sector edges, and reads
// end short at the end of the file and give nothing behind it.
TEST(FileStream, ReadAheadAndAlignedModeGivePlainResults)
{
    TempDir dir;
    const std::string content = Pattern(1300000);
    WideString path = dir.Write("big", content);
    FileStream plain, buffered, aligned;
    ASSERT_TRUE(plain.OpenPlain(path, platform::kFileAttributeNormal));
    ASSERT_TRUE(buffered.OpenPlain(path, platform::kFileAttributeNormal));
    ASSERT_TRUE(buffered.EnableReadAhead(4096));
    ASSERT_TRUE(aligned.OpenAligned(path, platform::kFileAttributeNormal));
    ASSERT_TRUE(aligned.IsAligned());
    EXPECT_FALSE(aligned.EnableReadAhead(4096));

    struct Step {
        char kind; // 'r' read, 's' seek
        std::int64_t amount;
        platform::SeekOrigin origin;
    };
    constexpr auto B = platform::SeekOrigin::Begin, C = platform::SeekOrigin::Current, E = platform::SeekOrigin::End;
    const Step steps[] = {
        {'r', 4, B},     {'r', 4, B},      {'r', 3, B},      {'s', 1, C},     {'r', 5000, B},
        {'s', -7, C},    {'r', 2047, B},   {'r', 2049, B},   {'s', 299990, B}, {'r', 100, B},
        {'r', 4, B},     {'s', 1000000, B}, {'r', 4, B},     {'s', -5, E},    {'r', 10, B},
        {'s', -400000, C}, {'s', 10, B},   {'r', 1, B},      {'s', 4096, C},  {'r', 8192, B},
        {'s', 100, B},   {'r', 4, B},      {'s', 510, B},    {'r', 4, B},     {'s', 7, B},
        {'r', 1200000, B}, {'s', 1299990, B}, {'r', 20, B},  {'r', 4, B},     {'s', 0, E},
        {'r', 4, B},
        // Before the start: refused in every mode, the position kept.
        {'s', 100, B},   {'s', -1, B},     {'r', 4, B},      {'s', -200, C},  {'r', 4, B},
        {'s', -1300001, E}, {'r', 4, B},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(testing::Message() << step.kind << " " << step.amount << " " << static_cast<int>(step.origin));
        if (step.kind == 's') {
            const bool moved = plain.Seek(step.amount, step.origin);
            EXPECT_EQ(buffered.Seek(step.amount, step.origin), moved);
            // Aligned mode counts back from the end (the only use is at 0):
            // -offset there is what +offset is in plain mode.
            EXPECT_EQ(aligned.Seek(step.origin == E ? -step.amount : step.amount, step.origin), moved);
        } else {
            std::string a(static_cast<std::size_t>(step.amount), 'x'), b = a, c = a;
            std::uint32_t gotA = plain.Read(a.data(), static_cast<std::uint32_t>(step.amount));
            EXPECT_EQ(buffered.Read(b.data(), static_cast<std::uint32_t>(step.amount)), gotA);
            EXPECT_EQ(aligned.Read(c.data(), static_cast<std::uint32_t>(step.amount)), gotA);
            EXPECT_EQ(a, b);
            EXPECT_EQ(a, c);
        }
        EXPECT_EQ(plain.Tell(), buffered.Tell());
        EXPECT_EQ(plain.Tell(), aligned.Tell());
    }
}

TEST(FileStream, BehindTheEndTellsWhereAndReadsNothing)
{
    TempDir dir;
    WideString path = dir.Write("a", "abc");
    for (bool readAhead : {false, true}) {
        SCOPED_TRACE(readAhead);
        FileStream stream;
        ASSERT_TRUE(stream.OpenPlain(path, platform::kFileAttributeNormal));
        if (readAhead) {
            ASSERT_TRUE(stream.EnableReadAhead(64));
        }
        EXPECT_TRUE(stream.SeekTo(5000000000LL));
        EXPECT_EQ(stream.Tell(), 5000000000LL);
        char byte;
        EXPECT_EQ(stream.Read(&byte, 1), 0u);
        EXPECT_FALSE(stream.Seek(-6000000000LL, platform::SeekOrigin::Current)) << "before the start";
        EXPECT_TRUE(stream.Seek(-1, platform::SeekOrigin::End));
        EXPECT_EQ(stream.Tell(), 2);
    }

    // A count beyond the file reads what is there, a zero byte as a
    // character; at the end nothing comes.
    FileStream stream;
    ASSERT_TRUE(stream.OpenPlain(dir.Write("t", std::string("ab\0c", 4)), platform::kFileAttributeNormal));
    WideString text;
    ASSERT_TRUE(stream.ReadText(text, 0xFFFFFFF0u));
    EXPECT_EQ(text.View(), std::u16string_view(u"ab\0c", 4));
    EXPECT_FALSE(stream.ReadText(text, 4));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_FALSE(stream.ReadText(text, 0));
}


// Memory mode answers every read, seek, Tell and size as the same bytes on
// disk do, across the end and past it, and for no bytes at all; it writes
// nothing.
TEST(FileStream, MemoryModeReadsAsTheFileOfItsBytes)
{
    TempDir dir;
    struct Step {
        std::int64_t offset;
        platform::SeekOrigin origin;
        std::uint32_t count;
    };
    const Step steps[] = {
        {0, platform::SeekOrigin::Begin, 2},     {1, platform::SeekOrigin::Current, 4000},
        {-3, platform::SeekOrigin::End, 10},     {5, platform::SeekOrigin::End, 1},
        {-1, platform::SeekOrigin::Current, 1},  {-9000, platform::SeekOrigin::Current, 1},
        {4096, platform::SeekOrigin::Begin, 2},  {1LL << 40, platform::SeekOrigin::Begin, 1},
    };
    for (std::size_t size : {0u, 1u, 3u, 4097u}) {
        SCOPED_TRACE(size);
        const std::string bytes = Pattern(size);
        FileStream file, memory;
        ASSERT_TRUE(file.OpenPlain(dir.Write("m" + std::to_string(size), bytes), platform::kFileAttributeNormal));
        ASSERT_TRUE(memory.OpenMemory({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()},
                                      WideString(u"held.wav")));
        EXPECT_TRUE(memory.IsOpen());
        EXPECT_EQ(memory.GetPath().View(), u"held.wav");
        EXPECT_EQ(memory.GetSize(), file.GetSize());
        for (const Step& step : steps) {
            SCOPED_TRACE(step.offset);
            EXPECT_EQ(memory.Seek(step.offset, step.origin), file.Seek(step.offset, step.origin));
            EXPECT_EQ(memory.Tell(), file.Tell());
            std::string a(step.count, '\0'), b(step.count, '\0');
            const std::uint32_t got = memory.Read(a.data(), step.count);
            EXPECT_EQ(got, file.Read(b.data(), step.count));
            EXPECT_EQ(a, b);
            EXPECT_EQ(memory.Tell(), file.Tell());
        }
        EXPECT_EQ(memory.Write("x", 1), 0u);
        EXPECT_FALSE(memory.Flush());
        memory.Close();
        EXPECT_FALSE(memory.IsOpen());
        EXPECT_EQ(memory.GetSize(), 0);
    }
}
