#include "engine/PopupMenu.h"

#include "platform/standin/TestHooks.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using Entries = std::vector<std::pair<std::uintptr_t, std::u16string>>;

TEST(PopupMenuTest, ItemsTakeIdsInOrderAndTheChoiceComesBackAsTheirIndex)
{
    platform::testing::ResetStandIn();
    {
        PopupMenu menu;
        EXPECT_EQ(menu.Track(nullptr, 0, 0), -1);

        menu.Reset();
        EXPECT_EQ(menu.AddItem(u"first"), 0);
        EXPECT_EQ(menu.AddItem(u""), -1);
        EXPECT_EQ(menu.AddItem(u"second"), 1);
        EXPECT_EQ(menu.AddItem(u"third"), 2);

        platform::testing::TakeCallLog();
        platform::testing::SetMenuChoice(2);
        EXPECT_EQ(menu.Track(nullptr, 300, 200), 1);
        EXPECT_EQ(platform::testing::TakeCallLog(), std::vector<std::string>{"TrackMenu 300 200"});
        EXPECT_EQ(platform::testing::TrackedMenuEntries(), (Entries{{1, u"first"}, {2, u"second"}, {3, u"third"}}));
        platform::testing::SetMenuChoice(0);
        EXPECT_EQ(menu.Track(nullptr, 300, 200), -1);

        // A reset starts the ids again on a new root; items after a submenu
        // go into it.
        menu.Reset();
        EXPECT_EQ(platform::testing::OpenMenus(), 1);
        EXPECT_TRUE(menu.AddSubMenu(u"more"));
        EXPECT_EQ(menu.AddItem(u"inner"), 0);
        EXPECT_EQ(platform::testing::OpenMenus(), 2);
        menu.Track(nullptr, 0, 0);
        const Entries root = platform::testing::TrackedMenuEntries();
        ASSERT_EQ(root.size(), 1u);
        EXPECT_EQ(root[0].second, u"more");
    }
    EXPECT_EQ(platform::testing::OpenMenus(), 0);
}

} // namespace
