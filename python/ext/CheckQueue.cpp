#include "CheckQueue.h"

CheckQueue::CheckQueue(unsigned jobs)
{
    for (unsigned i = 0; i < (jobs ? jobs : 1); ++i)
        workers.emplace_back([this] { Work(); });
}

// Checks under way finish and are dropped; those not begun never are.
CheckQueue::~CheckQueue()
{
    {
        std::lock_guard<std::mutex> hold(lock);
        stopping = true;
    }
    changed.notify_all();
    for (std::thread& worker : workers)
        worker.join();
}

void CheckQueue::Put(CheckSource source)
{
    {
        std::lock_guard<std::mutex> hold(lock);
        waiting.emplace_back(put++, std::move(source));
    }
    changed.notify_all();
}

bool CheckQueue::Take(SourceOutcome& outcome)
{
    std::unique_lock<std::mutex> hold(lock);
    if (taken == put)
        return false;
    changed.wait(hold, [&] { return done.count(taken) > 0; });
    auto found = done.find(taken);
    outcome = std::move(found->second);
    done.erase(found);
    ++taken;
    return true;
}

void CheckQueue::Work()
{
    for (;;) {
        std::pair<std::size_t, CheckSource> next;
        {
            std::unique_lock<std::mutex> hold(lock);
            changed.wait(hold, [&] { return stopping || !waiting.empty(); });
            if (stopping)
                return;
            next = std::move(waiting.front());
            waiting.pop_front();
        }
        SourceOutcome outcome = CheckSourceAsJson(next.second);
        {
            std::lock_guard<std::mutex> hold(lock);
            done.emplace(next.first, std::move(outcome));
        }
        changed.notify_all();
    }
}
