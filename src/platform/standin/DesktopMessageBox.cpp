#include "platform/DesktopMessageBox.h"

#include "platform/standin/TestHooks.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

// There is no desktop to show a box on. The stand-in records each box for
// the tests and, while they hold boxes, keeps the caller waiting as a user
// would.
namespace platform {

namespace {

struct BoxState {
    std::mutex mutex;
    std::condition_variable changed;
    bool hold = false;
    std::deque<testing::DesktopMessageBoxRecord> shown;
    // Raised by each CloseDesktopMessageBoxes; a held box waits for a change.
    std::uint64_t closings = 0;
};

BoxState& Boxes()
{
    static BoxState state;
    return state;
}

} // namespace

// Returns the OK button's id once the box is closed.
std::int32_t ShowDesktopMessageBox(std::u16string_view text, std::u16string_view caption, std::uint32_t type)
{
    BoxState& boxes = Boxes();
    std::unique_lock<std::mutex> lock(boxes.mutex);
    boxes.shown.push_back({std::u16string(text), std::u16string(caption), type});
    boxes.changed.notify_all();
    if (boxes.hold) {
        const std::uint64_t closings = boxes.closings;
        boxes.changed.wait(lock, [&] { return boxes.closings != closings; });
    }
    return kMessageBoxIdOk;
}

namespace testing {

void HoldDesktopMessageBoxes(bool hold)
{
    BoxState& boxes = Boxes();
    std::lock_guard<std::mutex> guard(boxes.mutex);
    boxes.hold = hold;
    boxes.shown.clear();
}

bool WaitForDesktopMessageBox(DesktopMessageBoxRecord& box, std::uint32_t timeoutMs)
{
    BoxState& boxes = Boxes();
    std::unique_lock<std::mutex> lock(boxes.mutex);
    if (!boxes.changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] { return !boxes.shown.empty(); }))
        return false;
    box = std::move(boxes.shown.front());
    boxes.shown.pop_front();
    return true;
}

void CloseDesktopMessageBoxes()
{
    BoxState& boxes = Boxes();
    std::lock_guard<std::mutex> guard(boxes.mutex);
    ++boxes.closings;
    boxes.changed.notify_all();
}

} // namespace testing

} // namespace platform
