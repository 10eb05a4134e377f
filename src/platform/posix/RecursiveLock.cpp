#include "platform/RecursiveLock.h"

#include <mutex>

namespace platform {

struct RecursiveLock::State {
    std::recursive_mutex mutex;
};

RecursiveLock::RecursiveLock() : state(new State) {}

RecursiveLock::~RecursiveLock() = default;

void RecursiveLock::Enter()
{
    state->mutex.lock();
}

void RecursiveLock::Leave()
{
    state->mutex.unlock();
}

} // namespace platform
