#pragma once

#include "SourceCheck.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

// The checks of check_many: sources go in in order, are checked on threads
// of their own, and come out in the order they went in. The caller bounds
// the sources it has put and not taken, and so the memory; it keeps each
// source's bytes alive until its outcome is taken. Put and Take are called
// by one thread at a time.
class CheckQueue {
public:
    explicit CheckQueue(unsigned jobs);
    ~CheckQueue();
    CheckQueue(const CheckQueue&) = delete;
    CheckQueue& operator=(const CheckQueue&) = delete;

    void Put(CheckSource source);
    // The outcome of the first source put and not yet taken, once it is
    // there; false when there is none.
    bool Take(SourceOutcome& outcome);
    std::size_t Pending() const { return put - taken; }

private:
    void Work();

    std::mutex lock;
    std::condition_variable changed;
    std::deque<std::pair<std::size_t, CheckSource>> waiting;
    std::map<std::size_t, SourceOutcome> done;
    std::size_t put = 0;
    std::size_t taken = 0;
    bool stopping = false;
    std::vector<std::thread> workers;
};
