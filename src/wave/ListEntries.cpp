#include "wave/ListEntries.h"

std::vector<ListEntry> ReadListEntries(BodySpan entries, std::int64_t offset)
{
    std::vector<ListEntry> found;
    std::size_t at = 0;
    while (at + 8 <= entries.size()) {
        const std::size_t size = BodyU32(entries, at + 4);
        const std::size_t held = std::min(size, entries.size() - at - 8);
        found.push_back({offset + static_cast<std::int64_t>(at), BodyId(entries, at), entries.subspan(at + 8, held)});
        if (held < size)
            break;
        at += 8 + size + size % 2;
    }
    return found;
}
