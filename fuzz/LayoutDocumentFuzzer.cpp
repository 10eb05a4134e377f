// The section reader on arbitrary text. The input's bytes are taken in pairs
// as UTF-16 units, so that every unit, CR and LF among them, can occur.
#include "layouttext/LayoutDocument.h"

#include "FuzzInput.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const WideString text(UnitsFromBytes(data, size));

    LayoutDocument document;
    const bool parsed = document.Parse(text);
    if (parsed == text.IsEmpty())
        FailInvariant("Parse is false exactly for the empty text");

    std::size_t lines = 1;
    for (std::size_t at = text.Find(u"\r\n"); at != WideString::npos; at = text.Find(u"\r\n", at + 2))
        ++lines;
    if (static_cast<std::size_t>(document.GetSectionCount()) > lines)
        FailInvariant("more sections than lines");

    for (std::int32_t i = 0; i < document.GetSectionCount(); ++i) {
        const WideString& name = document.GetSectionName(i);
        if (name.IsEmpty() || name.Find(u"\r\n") != WideString::npos)
            FailInvariant("a section name is empty or spans lines");
        const AttributeMap& map = document.GetSectionMap(i);
        WideString key, value;
        std::int32_t entries = 0;
        while (map.GetEntry(entries, key, value)) {
            if (key.Find(u'=') != WideString::npos)
                FailInvariant("a key holds '='");
            if (!(map.GetRaw(key) == value))
                FailInvariant("an entry of the walk is not found by its key");
            ++entries;
        }
        if (entries != map.Count())
            FailInvariant("the walk misses entries");
    }
    if (!(document.GetSectionName(document.GetSectionCount()) == WideString()))
        FailInvariant("an index out of range gives more than the empty name");

    LayoutDocument again;
    again.Parse(text);
    if (again.GetSectionCount() != document.GetSectionCount())
        FailInvariant("Parse is not deterministic");
    return 0;
}
