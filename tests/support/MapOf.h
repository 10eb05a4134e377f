#pragma once

#include "layouttext/AttributeMap.h"

#include <initializer_list>
#include <utility>

// The keys and values of one section, fitted once complete as a section of
// a loaded layout is.
inline AttributeMap MapOf(std::initializer_list<std::pair<const char16_t*, const char16_t*>> entries)
{
    AttributeMap map;
    for (const auto& [key, value] : entries)
        map.Set(key, value);
    map.Rehash();
    return map;
}
