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
}

// Read-ahead must not change any result of plain mode: the same sequence of
// operations runs on both and is compared step by step.
TEST(FileStream, ReadAheadGivesPlainResults)
{
    TempDir dir;
    const std::string content = Pattern(300000);
    WideString path = dir.Write("big", content);
    FileStream plain, buffered;
    ASSERT_TRUE(plain.OpenPlain(path, platform::kFileAttributeNormal));
    ASSERT_TRUE(buffered.OpenPlain(path, platform::kFileAttributeNormal));
    ASSERT_TRUE(buffered.EnableReadAhead(4096));

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
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(testing::Message() << step.kind << " " << step.amount << " " << static_cast<int>(step.origin));
        if (step.kind == 's') {
            EXPECT_EQ(plain.Seek(step.amount, step.origin), buffered.Seek(step.amount, step.origin));
        } else {
            std::string a(static_cast<std::size_t>(step.amount), 'x'), b = a;
            std::uint32_t gotA = plain.Read(a.data(), static_cast<std::uint32_t>(step.amount));
            std::uint32_t gotB = buffered.Read(b.data(), static_cast<std::uint32_t>(step.amount));
            EXPECT_EQ(gotA, gotB);
            EXPECT_EQ(a, b);
        }
        EXPECT_EQ(plain.Tell(), buffered.Tell());
    }
}

TEST(FileStream, TellAfterSeekBehindTheEnd)
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
}

TEST(FileStream, ReadTextConvertsWhatCame)
{
    TempDir dir;
    WideString path = dir.Write("t", std::string("ab\0c", 4));
    FileStream stream;
    ASSERT_TRUE(stream.OpenPlain(path, platform::kFileAttributeNormal));
    WideString text;
    ASSERT_TRUE(stream.ReadText(text, 0xFFFFFFF0u)) << "a count beyond the file reads what is there";
    EXPECT_EQ(text.View(), std::u16string_view(u"ab\0c", 4)) << "a zero byte is a character";
    EXPECT_FALSE(stream.ReadText(text, 4)) << "at the end nothing comes";
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_FALSE(stream.ReadText(text, 0));
}
