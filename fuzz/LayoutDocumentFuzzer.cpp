// The section reader on arbitrary text. The input's bytes are taken in pairs
// as UTF-16 units, so that every unit, CR and LF among them, can occur.
#include "layouttext/LayoutDocument.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

void Fail(const char* what)
{
    std::fprintf(stderr, "invariant broken: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::u16string units(size / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
    const WideString text(units);

    LayoutDocument document;
    const bool parsed = document.Parse(text);
    if (parsed == text.IsEmpty())
        Fail("Parse is false exactly for the empty text");

    std::size_t lines = 1;
    for (std::size_t at = text.Find(u"\r\n"); at != WideString::npos; at = text.Find(u"\r\n", at + 2))
        ++lines;
    if (static_cast<std::size_t>(document.GetSectionCount()) > lines)
        Fail("more sections than lines");

    for (std::int32_t i = 0; i < document.GetSectionCount(); ++i) {
        const WideString& name = document.GetSectionName(i);
        if (name.IsEmpty() || name.Find(u"\r\n") != WideString::npos)
            Fail("a section name is empty or spans lines");
        const AttributeMap& map = document.GetSectionMap(i);
        WideString key, value;
        std::int32_t entries = 0;
        while (map.GetEntry(entries, key, value)) {
            if (key.Find(u'=') != WideString::npos)
                Fail("a key holds '='");
            if (!(map.GetRaw(key) == value))
                Fail("an entry of the walk is not found by its key");
            ++entries;
        }
        if (entries != map.Count())
            Fail("the walk misses entries");
    }
    if (!(document.GetSectionName(document.GetSectionCount()) == WideString()))
        Fail("an index out of range gives more than the empty name");

    LayoutDocument again;
    again.Parse(text);
    if (again.GetSectionCount() != document.GetSectionCount())
        Fail("Parse is not deterministic");
    return 0;
}
