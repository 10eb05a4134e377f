#include "app/DialogWindow.h"

#include <gtest/gtest.h>

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
    }
}
