#include "loop/MessageLoop.h"

namespace {

// Takes the first entry equal to item out of items, keeping the order of
// the others. false when there is none.
template <typename T>
bool RemoveByValue(Array<T*>& items, T* item)
{
    for (std::size_t i = 0; i < items.Count(); ++i) {
        if (items.At(i) == item) {
            items.RemoveAt(i);
            return true;
        }
    }
    return false;
}

} // namespace

// Asks the filters from the last registered to the first; the first that
// uses the message up ends the walk. A filter may take itself out while it
// runs, so the walk goes by index and checks it against the count.
bool MessageLoop::PreTranslateMessage(platform::Message& currentMessage)
{
    for (std::size_t i = filters.Count(); i > 0; --i) {
        if (i > filters.Count())
            continue;
        MessageFilter* filter = filters.At(i - 1);
        if (filter != nullptr && filter->PreTranslateMessage(currentMessage))
            return true;
    }
    return false;
}

// Calls every idle handler, from the first registered to the last, and
// ignores what they give. Always false: one pass per empty queue.
bool MessageLoop::OnIdle(int)
{
    for (std::size_t i = 0; i < idleHandlers.Count(); ++i) {
        IdleHandler* handler = idleHandlers.At(i);
        if (handler != nullptr)
            handler->OnIdle();
    }
    return false;
}

bool MessageLoop::AddMessageFilter(MessageFilter* filter)
{
    filters.Add(filter);
    return true;
}

// false when filter was not registered.
bool MessageLoop::RemoveMessageFilter(MessageFilter* filter)
{
    return RemoveByValue(filters, filter);
}

bool MessageLoop::AddIdleHandler(IdleHandler* handler)
{
    idleHandlers.Add(handler);
    return true;
}

// false when handler was not registered.
bool MessageLoop::RemoveIdleHandler(IdleHandler* handler)
{
    return RemoveByValue(idleHandlers, handler);
}

// Pumps until the quit request and returns its exit code. An idle pass runs
// once when the queue has run empty after a message that counts.
int MessageLoop::Run()
{
    bool idleDue = true;
    int idleCount = 0;
    for (;;) {
        while (idleDue && !platform::PumpPeekMessage(message)) {
            if (!OnIdle(idleCount++))
                idleDue = false;
        }
        int got = platform::WaitForMessage(message);
        // The system could not deliver a message; try again as things stand.
        if (got == -1)
            continue;
        if (got == 0)
            break;
        if (!PreTranslateMessage(message)) {
            platform::TranslateKeyMessage(message);
            platform::DeliverMessage(message);
        }
        if (IsIdleMessage(message)) {
            idleDue = true;
            idleCount = 0;
        }
    }
    return static_cast<int>(message.wParam);
}

// Mouse moves over the window and its frame, repaints and the caret's
// blinking come all the time without changing anything the idle pass looks
// at; if they re-armed it, a moving mouse would keep the pass busy.
bool MessageLoop::IsIdleMessage(const platform::Message& currentMessage)
{
    switch (currentMessage.id) {
    case platform::kMessagePaint:
    case platform::kMessageNcMouseMove:
    case platform::kMessageCaretBlink:
    case platform::kMessageMouseMove:
        return false;
    default:
        return true;
    }
}
