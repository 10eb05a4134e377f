#pragma once

#include <memory>

// A lock that the thread holding it may take again (a critical section on
// Windows). Not copied.
namespace platform {

class RecursiveLock {
public:
    RecursiveLock();
    ~RecursiveLock();
    RecursiveLock(const RecursiveLock&) = delete;
    RecursiveLock& operator=(const RecursiveLock&) = delete;

    void Enter();
    void Leave();

private:
    struct State;
    std::unique_ptr<State> state;
};

// Holds a RecursiveLock for the length of a scope.
class LockGuard {
public:
    explicit LockGuard(RecursiveLock& lock) : lock(lock) { lock.Enter(); }
    ~LockGuard() { lock.Leave(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    RecursiveLock& lock;
};

} // namespace platform
