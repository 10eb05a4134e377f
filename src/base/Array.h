#pragma once

#include "base/ContainerAllocator.h"
#include "base/ContainerError.h"

#include <cstddef>
#include <utility>
#include <vector>

// The shared array: grows like ByteBlock (by half its capacity at least, the
// first allocation exact) and throws ContainerError for a bad index.
template <typename T>
class Array {
public:
    using Storage = std::vector<T, ContainerAllocator<T>>;

    std::size_t Count() const { return items.size(); }
    bool IsEmpty() const { return items.empty(); }

    T& At(std::size_t index)
    {
        if (index >= items.size())
            ThrowContainerError(kResultInvalidArgument);
        return items[index];
    }
    const T& At(std::size_t index) const
    {
        if (index >= items.size())
            ThrowContainerError(kResultInvalidArgument);
        return items[index];
    }

    T& Add(T item)
    {
        Reserve(items.size() + 1);
        items.push_back(std::move(item));
        return items.back();
    }

    // Puts item in front of the one at index; index Count() appends.
    T& Insert(std::size_t index, T item)
    {
        if (index > items.size())
            ThrowContainerError(kResultInvalidArgument);
        Reserve(items.size() + 1);
        return *items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
    }

    // The first index whose item equals item; Count() when none does.
    template <typename U>
    std::size_t IndexOf(const U& item) const
    {
        std::size_t index = 0;
        while (index < items.size() && !(items[index] == item))
            ++index;
        return index;
    }

    // Takes the item out and keeps the order of the others.
    T RemoveAt(std::size_t index)
    {
        T item = std::move(At(index));
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
        return item;
    }

    T RemoveLast()
    {
        T item = std::move(At(items.size() - 1));
        items.pop_back();
        return item;
    }

    void Clear() { items.clear(); }
    // Clears the items and gives their storage back.
    void Release() { Storage().swap(items); }

    // Clears the items from the last to the first, so that owned objects go
    // in the reverse order of their making.
    void ClearFromBack()
    {
        while (!items.empty())
            items.pop_back();
    }

    auto begin() { return items.begin(); }
    auto end() { return items.end(); }
    auto begin() const { return items.begin(); }
    auto end() const { return items.end(); }

private:
    void Reserve(std::size_t needed)
    {
        std::size_t capacity = items.capacity();
        if (needed <= capacity)
            return;
        std::size_t step = capacity / 2 > needed - capacity ? capacity / 2 : needed - capacity;
        items.reserve(capacity == 0 ? needed : capacity + step);
    }

    Storage items;
};
