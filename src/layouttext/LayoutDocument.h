#pragma once

#include "base/Array.h"
#include "base/WideString.h"
#include "layouttext/AttributeMap.h"

#include <cstdint>
#include <memory>
#include <string_view>

// One section of a layout text: the name between its brackets, exactly as
// written, and its keys with their raw values. Owned by its LayoutDocument.
struct LayoutSection {
    WideString name;
    AttributeMap attributes;
};

// A section file such as Main.jpn held in memory: its sections in file
// order, duplicates kept. Lives on the stack of whoever loads it, for the
// time of loading, and is used by one thread.
class LayoutDocument {
public:
    bool Load(const WideString& path);
    bool Parse(const WideString& text);
    std::int32_t GetSectionCount() const { return static_cast<std::int32_t>(sections.Count()); }
    const WideString& GetSectionName(std::int32_t index) const;
    const AttributeMap& GetSectionMap(std::int32_t index) const;

    // For readers that use a document up from the front.
    bool RemoveFirstSection();
    const WideString& GetPath() const { return path; }

private:
    void ParseLine(std::u16string_view line);
    const LayoutSection* SectionAt(std::int32_t index) const;

    Array<std::unique_ptr<LayoutSection>> sections;
    WideString path;
};
