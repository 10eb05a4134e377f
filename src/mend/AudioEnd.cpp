#include "mend/AudioEnd.h"

#include "wave/FourCc.h"

#include <algorithm>

namespace {

bool IsIdByte(std::uint8_t byte)
{
    return byte >= 0x20 && byte <= 0x7E;
}

// Letters, digits, spaces and underscores, as the ids of writers are.
bool IsPlainId(const std::uint8_t* id)
{
    for (int i = 0; i < 4; ++i) {
        const char c = static_cast<char>(id[i]);
        if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ' ' || c == '_'))
            return false;
    }
    return true;
}

} // namespace

// Reads the tail of the file and finds the runs in it; false when the file
// can't be read.
bool AudioEnd::Find(FileStream& input, std::int64_t audioStart, std::int64_t fileSize)
{
    const std::int64_t from = std::max(audioStart, fileSize - kAudioEndWindow);
    tail.resize(static_cast<std::size_t>(fileSize - from));
    if (!input.SeekTo(from) || input.Read(tail.data(), static_cast<std::uint32_t>(tail.size())) != tail.size())
        return false;
    // reaches[i]: a run of chunks from from + i reaches the end exactly.
    std::vector<std::uint8_t> reaches(tail.size() + 2, 0);
    reaches[tail.size()] = 1;
    for (std::size_t i = tail.size(); i-- > 0;) {
        if (i + 8 > tail.size() || !IsIdByte(tail[i]) || !IsIdByte(tail[i + 1]) || !IsIdByte(tail[i + 2]) ||
            !IsIdByte(tail[i + 3]))
            continue;
        const std::uint64_t size = ReadLittleEndian32(tail.data() + i + 4);
        const std::uint64_t end = i + 8 + size;
        // The last chunk may go without its pad byte.
        if (end == tail.size() || (end + size % 2 <= tail.size() && reaches[end + size % 2]))
            reaches[i] = 1;
    }
    // The earliest run is the reading: every later position where a run
    // begins lies inside it (its later chunks, or a list's entries). Its
    // first chunk is taken for certain when its id is plain; audio that
    // merely looks like a chunk gives the next reading too.
    starts.clear();
    for (std::size_t i = 0; i < tail.size(); ++i) {
        if (!reaches[i])
            continue;
        starts.push_back(from + static_cast<std::int64_t>(i));
        if (!IsPlainId(tail.data() + i)) {
            const std::uint64_t size = ReadLittleEndian32(tail.data() + i + 4);
            starts.push_back(std::min<std::int64_t>(from + static_cast<std::int64_t>(i + 8 + size + size % 2),
                                                    from + static_cast<std::int64_t>(tail.size())));
        }
        break;
    }
    return true;
}

// The byte at a position of the file in the tail read; -1 outside it.
int AudioEnd::ByteAt(std::int64_t position, std::int64_t fileSize) const
{
    const std::int64_t from = fileSize - static_cast<std::int64_t>(tail.size());
    return position >= from && position < fileSize ? tail[static_cast<std::size_t>(position - from)] : -1;
}

// The ids of the run of chunks from start, as a reader would list them: at
// most four, and "nothing" for a run that starts at the end.
std::string AudioEnd::Describe(std::int64_t start, std::int64_t fileSize) const
{
    const std::int64_t from = fileSize - static_cast<std::int64_t>(tail.size());
    if (start >= fileSize)
        return "nothing";
    std::string ids;
    int count = 0;
    for (std::int64_t at = start; at + 8 <= fileSize && count < 4; ++count) {
        const std::uint8_t* header = tail.data() + (at - from);
        ids += (ids.empty() ? "" : ", ") + std::string(reinterpret_cast<const char*>(header), 4);
        const std::uint32_t size = ReadLittleEndian32(header + 4);
        at += 8 + std::int64_t{size} + size % 2;
    }
    return ids;
}
