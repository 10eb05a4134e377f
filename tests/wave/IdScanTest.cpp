#include "files/FileStream.h"
#include "support/TempDir.h"
#include "wave/FourCc.h"
#include "wave/IdScan.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

// Where an id of its own class stands, read back as "offset:id".
std::string Hit(std::int64_t offset, std::uint32_t id)
{
    char text[5] = {};
    std::memcpy(text, &id, 4);
    return std::to_string(offset) + ":" + text;
}

} // namespace

// The scan finds what a word-by-word walk from the same start finds, in the
// same order, with the stream right behind each id: across the ends of its
// blocks and of the pages it lines them up with, from starts that are no
// multiple of 4 (whose words straddle those ends), and up to the last word
// of the file.
TEST(IdScan, FindsWhatAWalkWordByWordFinds)
{
    constexpr std::size_t kBlock = 128 * 1024;
    std::string bytes(3 * kBlock + 6, 'x');
    const std::pair<std::size_t, const char*> planted[] = {
        {4, "RIFF"}, {kBlock - 4, "data"}, {kBlock, "fmt "}, {kBlock + 4094, "LIST"}, {2 * kBlock - 1, "INFO"},
        {2 * kBlock + 4097, "bext"}, {3 * kBlock - 8, "data"},
        // The last word of the file, for starts 2 bytes past a multiple of 4.
        {3 * kBlock + 2, "RIFF"},
        // A word that only begins like an id.
        {5000, "RIFX"},
    };
    for (const auto& [offset, id] : planted)
        bytes.replace(offset, 4, id);
    TempDir dir;
    const WideString path = dir.Write("words.bin", bytes);

    for (const std::int64_t start : {0, 1, 2, 3, 4, 4097, 2 * 131072 + 1}) {
        SCOPED_TRACE(start);
        std::vector<std::string> walked;
        for (std::size_t offset = start; offset + 4 <= bytes.size(); offset += 4) {
            const std::uint32_t word = ReadLittleEndian32(reinterpret_cast<const std::uint8_t*>(bytes.data() + offset));
            if (HasOwnClass(word))
                walked.push_back(Hit(static_cast<std::int64_t>(offset), word));
        }
        // The document's stream reads ahead; the scan must keep its place.
        FileStream stream;
        ASSERT_TRUE(stream.OpenPlain(path, 0));
        stream.EnableReadAhead(64 * 1024);
        ASSERT_TRUE(stream.SeekTo(start));
        IdScan scan;
        std::vector<std::string> found;
        std::uint32_t id = 0;
        while (scan.FindNext(stream, id))
            found.push_back(Hit(stream.Tell() - 4, id));
        EXPECT_EQ(found, walked);
    }
}
