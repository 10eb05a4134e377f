#pragma once

#include "base/ContainerError.h"

#include <cstddef>
#include <cstdlib>
#include <limits>

// Allocator of the shared containers: memory comes from malloc, and failure is
// reported as a ContainerError with the out-of-memory or size-overflow code
// instead of std::bad_alloc.
template <typename T>
struct ContainerAllocator {
    using value_type = T;

    ContainerAllocator() = default;
    template <typename U>
    ContainerAllocator(const ContainerAllocator<U>&) noexcept {}

    T* allocate(std::size_t count)
    {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
            ThrowContainerError(kResultSizeOverflow);
        void* memory = std::malloc(count * sizeof(T));
        if (!memory)
            ThrowContainerError(kResultOutOfMemory);
        return static_cast<T*>(memory);
    }

    void deallocate(T* memory, std::size_t) noexcept { std::free(memory); }

    template <typename U>
    bool operator==(const ContainerAllocator<U>&) const noexcept { return true; }
};
