#include "app/DialogWindow.h"
#include "app/PendingWindowList.h"
#include "platform/ThreadState.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// A dialog that handles nothing; only its address matters here.
class PlainDialog : public DialogWindow {
public:
    bool ProcessWindowMessage(platform::WindowHandle, std::uint32_t, std::uintptr_t, std::intptr_t,
                              std::intptr_t&) override
    {
        return false;
    }
};

} // namespace

TEST(PendingWindowList, OneEntryPerThreadTakenOnce)
{
    PendingWindowList list;
    PlainDialog a, b;
    platform::ThreadId mainThread = platform::CurrentThreadId();
    ASSERT_TRUE(list.Add(mainThread, &a));
    EXPECT_FALSE(list.Add(mainThread, &b));

    DialogWindow* takenByWorker = &a;
    std::thread worker([&] {
        takenByWorker = list.Take(platform::CurrentThreadId());
        list.Add(platform::CurrentThreadId(), &b);
    });
    worker.join();
    EXPECT_EQ(takenByWorker, nullptr);

    EXPECT_FALSE(list.Discard(mainThread, &b));
    EXPECT_EQ(list.Take(mainThread), &a);
    EXPECT_EQ(list.Take(mainThread), nullptr);
    EXPECT_TRUE(list.Add(mainThread, &b));
    EXPECT_TRUE(list.Discard(mainThread, &b));
    EXPECT_EQ(list.Take(mainThread), nullptr);
}

TEST(CenterWithin, CentresAndClampsInsideTheArea)
{
    struct Case {
        platform::PixelRect window;
        platform::PixelRect area;
        std::int32_t x;
        std::int32_t y;
    };
    const Case cases[] = {
        {{0, 0, 368, 261}, {0, 0, 1280, 1000}, 456, 370},
        {{500, 500, 868, 761}, {0, 0, 1280, 1000}, 456, 370},
        // A work area that doesn't start at the origin: a task bar on the left.
        {{0, 0, 100, 50}, {200, 0, 1000, 600}, 550, 275},
        // Odd sizes round towards the top left like the system's arithmetic.
        {{0, 0, 101, 51}, {0, 0, 1001, 601}, 450, 275},
        // Larger than the area: the left and top edges stay inside.
        {{0, 0, 1400, 1100}, {0, 0, 1280, 1000}, 0, 0},
        {{0, 0, 1400, 1100}, {100, 40, 1380, 1040}, 100, 40},
        // A second monitor left of the first.
        {{0, 0, 368, 261}, {-1280, 0, 0, 1000}, -824, 370},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.area.left << "," << c.area.top << " " << c.window.Width() << "x"
                                        << c.window.Height());
        WindowOrigin origin = CenterWithin(c.window, c.area);
        EXPECT_EQ(origin.x, c.x);
        EXPECT_EQ(origin.y, c.y);
        if (c.window.Width() <= c.area.Width() && c.window.Height() <= c.area.Height()) {
            EXPECT_GE(origin.x, c.area.left);
            EXPECT_LE(origin.x + c.window.Width(), c.area.right);
            EXPECT_GE(origin.y, c.area.top);
            EXPECT_LE(origin.y + c.window.Height(), c.area.bottom);
        }
    }
}
