// The map and its typed reads on arbitrary keys and values. The input is cut
// at zero units into alternating keys and values, as UTF-16 units from pairs
// of bytes; every read runs on every key.
#include "layouttext/AttributeMap.h"
#include "layouttext/ValueSyntax.h"

#include "FuzzInput.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::u16string> parts(1);
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        char16_t unit = static_cast<char16_t>(data[i] | data[i + 1] << 8);
        if (unit == 0)
            parts.emplace_back();
        else
            parts.back().push_back(unit);
    }

    AttributeMap map;
    std::map<std::u16string, std::u16string> expected;
    for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
        map.Set(WideString(parts[i]), WideString(parts[i + 1]));
        expected[parts[i]] = parts[i + 1];
    }
    const bool rehash = size % 2 != 0;
    if (rehash)
        map.Rehash();
    if (map.Count() != static_cast<std::int32_t>(expected.size()))
        FailInvariant("the count is not the number of distinct keys");

    const WideString fallback(u"fallback");
    for (const auto& [rawKey, rawValue] : expected) {
        const WideString key(rawKey);
        const WideString value(rawValue);
        if (!(map.GetRaw(key) == value) || !(map.GetValue(key, fallback, false) == value))
            FailInvariant("a key does not give its last value");
        if (!(map.GetValue(key, fallback, true) == Unescape(value)))
            FailInvariant("GetValue with unescaping is not Unescape of the raw value");
        if (Unescape(value).Length() > value.Length())
            FailInvariant("Unescape made the text longer");

        const std::int32_t count = map.GetItemCount(key);
        WideString joined, item;
        for (std::int32_t i = 0; i < count; ++i) {
            if (!map.GetItem(key, i, item))
                FailInvariant("an item below the count is missing");
            if (i > 0)
                joined += u",";
            joined += item;
            if (!map.HasItem(key, item) && !item.IsEmpty())
                FailInvariant("HasItem misses an item of the list");
        }
        if (!(joined == value))
            FailInvariant("the items joined by commas are not the value");
        if (map.GetItem(key, count, item) || map.GetItem(key, -1, item))
            FailInvariant("an item out of range exists");
        map.GetHex(key, 7);
        map.GetFirstInt(key, 7);
        map.GetSecondHex(key);
        map.GetFloatItem(key, 0, 7.0f);
        map.GetFloatItem(key, 1, 7.0f);
        ParseAlign(value);
    }
    const WideString absent(u"\xFFFF absent \xFFFF");
    if (expected.count(absent.ToU16String()) == 0 &&
        (map.GetHex(absent, 7) != 7 || map.GetFirstInt(absent, 7) != 7 || map.GetSecondHex(absent) != 0xFFFFFFFF ||
         !(map.GetValue(absent, fallback, true) == fallback)))
        FailInvariant("an absent key does not give the default");

    WideString key, value;
    std::int32_t walked = 0;
    while (map.GetEntry(walked, key, value)) {
        if (expected.count(key.ToU16String()) == 0)
            FailInvariant("the walk gives a key that was never set");
        ++walked;
    }
    if (walked != map.Count())
        FailInvariant("the walk does not visit every entry");
    return 0;
}
