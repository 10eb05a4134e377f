#pragma once

#include "base/Array.h"
#include "files/ByteBlock.h"
#include "platform/RecursiveLock.h"

#include <cstdint>
#include <memory>

// A process-wide set of ByteBlocks lent out whole, one borrower at a time,
// and given back with their memory, so that a copy loop of many rounds
// pays for its buffer once. Made at first use; it holds as many blocks as
// were ever lent at the same moment, and frees them at process exit.
class BufferPool {
public:
    static BufferPool& GetInstance();

    // The first block that is not lent, or a new empty one. It comes as its
    // last borrower left it: the borrower resizes it to what it needs.
    ByteBlock* Acquire();
    // False for a block that the pool doesn't hold.
    bool Release(ByteBlock* block);

private:
    BufferPool() = default;

    Array<std::unique_ptr<ByteBlock>> blocks;
    Array<std::uint8_t> busy;
    platform::RecursiveLock lock;
};

// Borrows a block of the pool for the length of its life.
class PooledBlockLease {
public:
    PooledBlockLease() : block(BufferPool::GetInstance().Acquire()) {}
    virtual ~PooledBlockLease() { BufferPool::GetInstance().Release(block); }
    PooledBlockLease(const PooledBlockLease&) = delete;
    PooledBlockLease& operator=(const PooledBlockLease&) = delete;

    ByteBlock& Block() { return *block; }

private:
    ByteBlock* block;
};
