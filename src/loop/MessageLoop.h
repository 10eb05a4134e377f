#pragma once

#include "base/Array.h"
#include "loop/IdleHandler.h"
#include "loop/MessageFilter.h"
#include "platform/MessageQueue.h"

// The message pump of one thread, with its filters and idle handlers; in
// this program one, on the stack of the run function, touched by the main
// thread only. It owns neither filters nor handlers.
class MessageLoop {
public:
    // Overrideables
    virtual bool PreTranslateMessage(platform::Message& currentMessage);
    virtual bool OnIdle(int idleCount);

    // Registration, by pointer value
    bool AddMessageFilter(MessageFilter* filter);
    bool RemoveMessageFilter(MessageFilter* filter);
    bool AddIdleHandler(IdleHandler* handler);
    bool RemoveIdleHandler(IdleHandler* handler);

    // Message pump
    int Run();
    // Whether a message re-arms the idle pass.
    static bool IsIdleMessage(const platform::Message& currentMessage);

private:
    Array<MessageFilter*> filters;
    Array<IdleHandler*> idleHandlers;
    platform::Message message;
};
