#include "platform/RecursiveLock.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace platform {

// A walk of a file takes the lock again for every chunk it reads, so the
// thread that holds it takes it again without a call of the system: only
// that thread can find itself as the owner.
struct RecursiveLock::State {
    std::mutex mutex;
    std::atomic<std::thread::id> owner{};
    unsigned depth = 0;
};

RecursiveLock::RecursiveLock() : state(new State) {}

RecursiveLock::~RecursiveLock() = default;

void RecursiveLock::Enter()
{
    const std::thread::id self = std::this_thread::get_id();
    if (state->owner.load(std::memory_order_relaxed) != self) {
        state->mutex.lock();
        state->owner.store(self, std::memory_order_relaxed);
    }
    ++state->depth;
}

void RecursiveLock::Leave()
{
    if (--state->depth == 0) {
        state->owner.store(std::thread::id(), std::memory_order_relaxed);
        state->mutex.unlock();
    }
}

} // namespace platform
