#pragma once

// Runs when a thread's queue has run empty after a message that counts.
// Registered, not owned, in the thread's MessageLoop.
class IdleHandler {
public:
    // The result is not looked at.
    virtual bool OnIdle() = 0;

protected:
    ~IdleHandler() = default;
};
