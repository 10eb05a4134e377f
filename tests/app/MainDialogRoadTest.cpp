#include "app/MainDialog.h"

#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/Thread.h"
#include "platform/ThreadState.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"
#include "widgets/WidgetFactory.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

// The widgets that the real factory made from the real layout, to be read
// by name.
std::vector<Widget*> made;

bool RecordingFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget)
{
    const bool known = WidgetFactory(sectionName, viewer, widget);
    if (widget != nullptr)
        made.push_back(widget.get());
    return known;
}

std::u16string Get(const char16_t* name, const char16_t* key)
{
    WideString value;
    for (Widget* widget : made) {
        if (widget->GetName() == name && widget->GetAttribute(key, value))
            return value.ToU16String();
    }
    return u"<unknown>";
}

// The main dialog with the layout that ships, on its own message loop: the
// user clicks into the path, types it, clicks the start button and waits
// for the report, each step when the loop has run dry and had its idle
// pass.
class MainDialogRoadTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        platform::testing::ResetStandIn();
        made.clear();
        MessageLoopRegistry::SetProcess(&registry);
        registry.Add(platform::CurrentThreadId(), &loop);
        dialog = std::make_unique<MainDialog>(RecordingFactory, WideString::FromAscii(SONDARA_MAIN_LAYOUT));
        window = dialog->Create(nullptr, MainDialog::kTemplateId);
        ASSERT_NE(window, nullptr);
        platform::ShowWindowAs(window, platform::kShowNormal);
        platform::SendToWindow(window, platform::kMessageSize, 0, 236 << 16 | 362);
    }
    void TearDown() override
    {
        platform::SendToWindow(window, platform::kMessageCommand, 2, 0);
        dialog.reset();
        registry.Remove();
        MessageLoopRegistry::SetProcess(nullptr);
        platform::testing::ResetStandIn();
    }

    void Click(std::int32_t x, std::int32_t y)
    {
        platform::PostToWindow(window, platform::kMessageLeftButtonDown, 1, y << 16 | x);
        platform::PostToWindow(window, platform::kMessageLeftButtonUp, 0, y << 16 | x);
    }
    static void Type(std::u16string_view text)
    {
        for (char16_t character : text)
            platform::PostToWindow(platform::GetKeyboardFocus(), platform::kMessageChar, character, 0);
    }

    // Runs the loop; each time it waits, the next step runs, and a step
    // that gives false runs again at the next wait, a timer tick later.
    void Run(std::vector<std::function<bool()>> steps)
    {
        std::size_t next = 0;
        int waits = 0;
        platform::testing::SetQueueWaitHook([&] {
            if (next == steps.size() || ++waits > 2000) {
                platform::PostQuit(0);
                return;
            }
            if (steps[next]())
                ++next;
            else
                platform::SleepMilliseconds(5);
        });
        loop.Run();
        platform::testing::SetQueueWaitHook({});
        EXPECT_EQ(next, steps.size());
    }

    TempDir dir;
    MessageLoopRegistry registry;
    MessageLoop loop;
    std::unique_ptr<MainDialog> dialog;
    platform::WindowHandle window = nullptr;
};

TEST_F(MainDialogRoadTest, ATypedPathIsCheckedAndItsReportShown)
{
    const struct {
        const char* name;
        WideString path;
        const char16_t* report;
        bool searchable;
    } cases[] = {
        {"missing", dir.PathOf("missing.wav"), u"ファイルがありません。\r\n", true},
        {"sound", dir.Write("sound.wav", SoundWave()), u"チェック完了しました。\r\n", false},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        Run({
            [&] {
                // A click into the path selects nothing, so the typed path
                // goes after what stands there: Ctrl+A and a backspace clear it.
                Click(100, 44);
                return true;
            },
            [&] {
                platform::testing::SetControlKeyDown(true);
                platform::PostToWindow(platform::GetKeyboardFocus(), platform::kMessageKeyDown, u'A', 0);
                return true;
            },
            [&] {
                platform::testing::SetControlKeyDown(false);
                Type(u"\b");
                Type(entry.path.View());
                return true;
            },
            [&] {
                EXPECT_EQ(Get(u"WaveFilePath", u"Editing"), u"true");
                EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"true");
                Click(60, 210);
                return true;
            },
            [&] { return Get(u"Message", u"Text") == entry.report; },
        });
        EXPECT_EQ(Get(u"WaveFilePath", u"Editing"), u"false");
        EXPECT_EQ(Get(u"WaveFilePath", u"Text"), entry.path.View());
        EXPECT_EQ(Get(u"SearchError", u"Enable"), entry.searchable ? u"true" : u"false");
    }
}

} // namespace
