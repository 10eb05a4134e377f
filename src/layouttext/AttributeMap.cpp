#include "layouttext/AttributeMap.h"

#include "base/ContainerError.h"
#include "layouttext/ValueSyntax.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace {

// Bucket counts: after 131 each prime is the first at or above the previous
// one and a quarter.
constexpr std::uint32_t kPrimes[] = {
    17, 23, 29, 37, 41, 53, 67, 83, 103, 131, 163, 211, 263, 331, 419, 523, 653, 821, 1031, 1289, 1613,
    2017, 2521, 3163, 3967, 4967, 6211, 7789, 9739, 12197, 15259, 19073, 23857, 29833, 37307, 46633,
    58309, 72889, 91121, 113903, 142381, 177979, 222493, 278119, 347651, 434563, 543203, 679033,
    848791, 1060991, 1326239, 1657801, 2072267, 2590349, 3237947, 4047469, 5059363, 6324203,
    7905253, 9881569, 12351967, 15439979, 19299979, 24124993, 30156241, 37695311, 47119141,
    58898951, 73623691, 92029621, 115037047, 143796311, 179745407, 224681759, 280852199,
    351065257, 438831571, 548539469, 685674359, 857092967, 1071366209, 1339207777, 1674009767,
    2092512209};

// Item index of a comma list: the value cut at every comma, nothing trimmed.
// False when the index is negative or not below the number of items; an
// empty value has no item at all.
bool FindItem(std::u16string_view value, std::int32_t index, std::u16string_view& item)
{
    if (index < 0 || value.empty())
        return false;
    std::size_t start = 0;
    for (std::int32_t i = 0; i < index; ++i) {
        std::size_t comma = value.find(u',', start);
        if (comma == std::u16string_view::npos)
            return false;
        start = comma + 1;
    }
    std::size_t end = std::min(value.find(u',', start), value.size());
    item = value.substr(start, end - start);
    return true;
}

} // namespace

AttributeMap::AttributeMap()
    : buckets(kInitialBucketCount, kNoEntry)
{
}

// The value under key: defaultValue, as it is, when the key is absent; else
// the raw value, resolved by Unescape when unescape is true. A key with an
// empty value is present and gives the empty text.
WideString AttributeMap::GetValue(const WideString& key, const WideString& defaultValue, bool unescape) const
{
    const Entry* entry = Find(key);
    if (!entry)
        return defaultValue;
    return unescape ? Unescape(entry->value) : entry->value;
}

// The raw value, or the empty text when the key is absent.
WideString AttributeMap::GetRaw(const WideString& key) const
{
    const Entry* entry = Find(key);
    return entry ? entry->value : WideString();
}

// 0 for an absent key or an empty value, else the commas of the value plus 1.
// Quotes are not looked at.
std::int32_t AttributeMap::GetItemCount(const WideString& key) const
{
    const Entry* entry = Find(key);
    if (!entry || entry->value.IsEmpty())
        return 0;
    std::u16string_view value = entry->value.View();
    return static_cast<std::int32_t>(std::count(value.begin(), value.end(), u',')) + 1;
}

// Item index of the value's comma list, untrimmed, into item. False, with item
// untouched, when the key is absent or there is no such item.
bool AttributeMap::GetItem(const WideString& key, std::int32_t index, WideString& item) const
{
    const Entry* entry = Find(key);
    std::u16string_view found;
    if (!entry || !FindItem(entry->value.View(), index, found))
        return false;
    item = WideString(found);
    return true;
}

// The item when GetItem finds one, even an empty one; else defaultItem.
WideString AttributeMap::GetItemOr(const WideString& key, std::int32_t index, const WideString& defaultItem) const
{
    WideString item;
    return GetItem(key, index, item) ? item : defaultItem;
}

// True when one item of the value's comma list equals item exactly. An empty
// item is never found, not even in a list with empty items.
bool AttributeMap::HasItem(const WideString& key, const WideString& item) const
{
    const Entry* entry = Find(key);
    if (item.IsEmpty() || !entry || entry->value.IsEmpty())
        return false;
    std::u16string_view rest = entry->value.View();
    for (;;) {
        std::size_t comma = rest.find(u',');
        if (rest.substr(0, comma) == item.View())
            return true;
        if (comma == std::u16string_view::npos)
            return false;
        rest.remove_prefix(comma + 1);
    }
}

// The entry at place index of a walk in bucket order. False, with key and
// value untouched, behind the last entry. The order changes when the map
// grows or is rehashed.
bool AttributeMap::GetEntry(std::int32_t index, WideString& key, WideString& value) const
{
    if (index < 0 || static_cast<std::size_t>(index) >= entries.Count())
        return false;
    std::int32_t place = 0;
    for (std::uint32_t head : buckets) {
        for (std::uint32_t at = head; at != kNoEntry; at = entries.At(at).next) {
            if (place++ == index) {
                key = entries.At(at).key;
                value = entries.At(at).value;
                return true;
            }
        }
    }
    return false;
}

// The raw value scanned as hexadecimal; defaultValue only when the key is
// absent, so a value that does not scan gives 0.
std::uint32_t AttributeMap::GetHex(const WideString& key, std::uint32_t defaultValue) const
{
    const Entry* entry = Find(key);
    return entry ? ScanHex(entry->value.View()) : defaultValue;
}

// Item 0 as a decimal integer; defaultValue when there is no item 0.
std::int32_t AttributeMap::GetFirstInt(const WideString& key, std::int32_t defaultValue) const
{
    WideString item;
    return GetItem(key, 0, item) ? ScanDecimalInt(item.View()) : defaultValue;
}

// Item 1 scanned as hexadecimal; 0xFFFFFFFF when there is no item 1.
std::uint32_t AttributeMap::GetSecondHex(const WideString& key) const
{
    WideString item;
    return GetItem(key, 1, item) ? ScanHex(item.View()) : 0xFFFFFFFF;
}

// Item index as a decimal floating-point number narrowed to float;
// defaultValue when there is no such item.
float AttributeMap::GetFloatItem(const WideString& key, std::int32_t index, float defaultValue) const
{
    WideString item;
    return GetItem(key, index, item) ? ScanFloat(item.View()) : defaultValue;
}

// Stores value under key; a key that is present gets the new value. An
// insert that takes the load beyond the high threshold grows the table to
// the fitting size.
void AttributeMap::Set(const WideString& key, const WideString& value)
{
    std::uint32_t hash = Hash(key.View());
    std::uint32_t bucket = hash % buckets.size();
    for (std::uint32_t at = buckets[bucket]; at != kNoEntry; at = entries.At(at).next) {
        Entry& entry = entries.At(at);
        if (entry.hash == hash && entry.key == key) {
            entry.value = value;
            return;
        }
    }
    if (entries.Count() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        ThrowContainerError(kResultSizeOverflow);
    entries.Add(Entry{key, value, hash, buckets[bucket]});
    buckets[bucket] = static_cast<std::uint32_t>(entries.Count() - 1);
    if (static_cast<double>(entries.Count()) > kHighLoad * static_cast<double>(buckets.size()))
        Resize(FittingBucketCount(entries.Count()));
}

// Brings the table to the prime that suits its entry count at the optimal
// load, in either direction. Done once a map is complete.
void AttributeMap::Rehash()
{
    std::uint32_t bucketCount = FittingBucketCount(entries.Count());
    if (bucketCount != buckets.size())
        Resize(bucketCount);
}

// h := h * 33 + unit over the UTF-16 units, in unsigned 32 bits from 0.
std::uint32_t AttributeMap::Hash(std::u16string_view key)
{
    std::uint32_t hash = 0;
    for (char16_t unit : key)
        hash = hash * 33 + unit;
    return hash;
}

// The smallest prime of the table at which entryCount stays within the
// optimal load; the largest one for a count beyond them all.
std::uint32_t AttributeMap::FittingBucketCount(std::size_t entryCount)
{
    for (std::uint32_t prime : kPrimes) {
        if (static_cast<double>(entryCount) <= kOptimalLoad * prime)
            return prime;
    }
    return kPrimes[std::size(kPrimes) - 1];
}

const AttributeMap::Entry* AttributeMap::Find(const WideString& key) const
{
    std::uint32_t hash = Hash(key.View());
    for (std::uint32_t at = buckets[hash % buckets.size()]; at != kNoEntry; at = entries.At(at).next) {
        const Entry& entry = entries.At(at);
        if (entry.hash == hash && entry.key == key)
            return &entry;
    }
    return nullptr;
}

// Chains every entry anew into bucketCount buckets. The new bucket array is
// made before anything changes, so running out of memory leaves the map as
// it was.
void AttributeMap::Resize(std::uint32_t bucketCount)
{
    decltype(buckets) newBuckets(bucketCount, kNoEntry);
    for (std::size_t i = 0; i < entries.Count(); ++i) {
        Entry& entry = entries.At(i);
        std::uint32_t bucket = entry.hash % bucketCount;
        entry.next = newBuckets[bucket];
        newBuckets[bucket] = static_cast<std::uint32_t>(i);
    }
    buckets.swap(newBuckets);
}
