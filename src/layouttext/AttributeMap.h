#pragma once

#include "base/Array.h"
#include "base/ContainerAllocator.h"
#include "base/WideString.h"

#include <cstdint>
#include <string_view>
#include <vector>

// The keys and raw values of one section of a layout text, with the typed
// reads that widgets take their configuration from. A chained hash table,
// held by value by its owner and used by one thread at a time.
class AttributeMap {
public:
    static constexpr std::uint32_t kInitialBucketCount = 17;
    // Loads, in entries per bucket. An insert that takes the map beyond the
    // high threshold grows it, and Rehash fits it to the optimal load, once a
    // map is complete. The low threshold marks a map worth shrinking; as
    // nothing takes entries out of a map, only Rehash ever shrinks one.
    static constexpr double kOptimalLoad = 0.75;
    static constexpr double kLowLoad = 0.25;
    static constexpr double kHighLoad = 2.25;

    AttributeMap();

    // Typed reads
    WideString GetValue(const WideString& key, const WideString& defaultValue, bool unescape) const;
    WideString GetRaw(const WideString& key) const;
    bool Contains(const WideString& key) const { return Find(key) != nullptr; }
    std::int32_t GetItemCount(const WideString& key) const;
    bool GetItem(const WideString& key, std::int32_t index, WideString& item) const;
    WideString GetItemOr(const WideString& key, std::int32_t index, const WideString& defaultItem) const;
    bool HasItem(const WideString& key, const WideString& item) const;
    bool GetEntry(std::int32_t index, WideString& key, WideString& value) const;
    std::uint32_t GetHex(const WideString& key, std::uint32_t defaultValue) const;
    std::int32_t GetFirstInt(const WideString& key, std::int32_t defaultValue) const;
    std::uint32_t GetSecondHex(const WideString& key) const;
    float GetFloatItem(const WideString& key, std::int32_t index, float defaultValue) const;

    // Building
    void Set(const WideString& key, const WideString& value);
    void Rehash();
    std::int32_t Count() const { return static_cast<std::int32_t>(entries.Count()); }

private:
    static constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

    struct Entry {
        WideString key;
        WideString value;
        std::uint32_t hash;
        std::uint32_t next; // the next entry of the same bucket, or kNoEntry
    };

    static std::uint32_t Hash(std::u16string_view key);
    static std::uint32_t FittingBucketCount(std::size_t entryCount);

    const Entry* Find(const WideString& key) const;
    void Resize(std::uint32_t bucketCount);

    // Entries stay where they were added; the buckets chain them by index.
    Array<Entry> entries;
    std::vector<std::uint32_t, ContainerAllocator<std::uint32_t>> buckets;
};
