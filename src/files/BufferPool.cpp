#include "files/BufferPool.h"

#include "base/ContainerError.h"

#include <new>

BufferPool& BufferPool::GetInstance()
{
    static BufferPool pool;
    return pool;
}

// Memory exhaustion leaves by the system's out-of-memory error, as the
// containers raise it.
ByteBlock* BufferPool::Acquire()
{
    platform::LockGuard guard(lock);
    std::size_t slot = 0;
    while (slot < busy.Count() && busy.At(slot) != 0)
        ++slot;
    if (slot == busy.Count()) {
        std::unique_ptr<ByteBlock> block(new (std::nothrow) ByteBlock);
        if (!block)
            ThrowContainerError(kResultOutOfMemory);
        blocks.Add(std::move(block));
        busy.Add(0);
    }
    busy.At(slot) = 1;
    return blocks.At(slot).get();
}

bool BufferPool::Release(ByteBlock* block)
{
    platform::LockGuard guard(lock);
    for (std::size_t slot = 0; slot < blocks.Count(); ++slot) {
        if (blocks.At(slot).get() == block) {
            busy.At(slot) = 0;
            return true;
        }
    }
    return false;
}
