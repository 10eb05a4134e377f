#pragma once

#include "platform/MessageQueue.h"

// Sees each queued message of a thread before it is translated and
// dispatched. Registered, not owned, in the thread's MessageLoop.
class MessageFilter {
public:
    // true: the message is used up and is neither translated nor dispatched.
    virtual bool PreTranslateMessage(platform::Message& message) = 0;

protected:
    ~MessageFilter() = default;
};
