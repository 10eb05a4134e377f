#include "app/VersionInfo.h"
#include "app/WebLinks.h"

#include "platform/standin/TestHooks.h"
#include "platform/Window.h"
#include "support/StandInTest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using WebLinks = StandInTest;

// A report line goes to the search as it stands, suffix and all; only "&"
// is escaped, by the shell call. The release note's address follows the
// product version of the language-neutral table.
TEST_F(WebLinks, ReportLinesAreSearchedAsTheyStandAndTheReleaseNoteFollowsTheVersion)
{
    const Array<WideString> lines = ReportLines(u"\r\nPCMではありません。 [0003]\r\n\r\nA & B\nlast");
    ASSERT_EQ(lines.Count(), 3u);
    EXPECT_EQ(lines.At(0), u"PCMではありません。 [0003]");
    platform::testing::TakeCallLog();
    OpenAddress(SearchAddress(lines.At(1)));
    EXPECT_EQ(platform::testing::TakeCallLog(),
              (std::vector<std::string>{"OpenWithShell open http://www.sondara.example/search.php?query=A %26 B",
                                        "EnableWindowInput 1"}));

    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"1, 0, 0, 1", u"1.00"}, {u"2, 10, 3, 7", u"2.103"}, {u"2, 10", u""}, {u"", u""}};
    for (const auto& [product, text] : cases) {
        platform::testing::SetProductVersion(product);
        VersionInfo version;
        EXPECT_TRUE(version.Load(WideString()));
        version.translation = u"000004b0";
        EXPECT_EQ(version.GetVersionText(), text);
    }
    EXPECT_EQ(ReleaseNoteAddress(u"2.103"), u"http://www.sondara.example/press_release.php?file_name=sondara_2103");

    // Another table has no product version.
    VersionInfo other;
    other.Load(WideString());
    other.translation = u"040904b0";
    Array<WideString> parts;
    EXPECT_FALSE(other.GetVersionParts(parts));
}

TEST_F(WebLinks, DisablingAWindowIsUndoneOnlyWhenItWasEnabled)
{
    const platform::WindowHandle window = platform::CreateDialogWindow(nullptr, 129, NeverHandles);
    platform::testing::TakeCallLog();
    {
        WindowDisabler disabler(window);
        EXPECT_FALSE(platform::IsWindowInputEnabled(window));
    }
    EXPECT_TRUE(platform::IsWindowInputEnabled(window));
    platform::EnableWindowInput(window, false);
    {
        WindowDisabler disabler(window);
    }
    EXPECT_FALSE(platform::IsWindowInputEnabled(window));
    EXPECT_EQ(platform::testing::TakeCallLog(),
              (std::vector<std::string>{"EnableWindowInput 0", "EnableWindowInput 1", "EnableWindowInput 0"}));

    EXPECT_FALSE(OpenUrl(nullptr, u"http://x"));
    platform::DestroyDialogWindow(window);
    EXPECT_FALSE(OpenUrl(window, u"http://x"));
}

} // namespace
