#include "app/MainDialog.h"

#include "base/Utf8.h"
#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/EditControl.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/Thread.h"
#include "platform/ThreadState.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"
#include "widgets/Button.h"
#include "widgets/EditableText.h"
#include "widgets/WidgetFactory.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

// The widgets that the real factory made from the real layout, to be read
// and written by name.
std::vector<Widget*> made;

bool RecordingFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget)
{
    const bool known = WidgetFactory(sectionName, viewer, widget);
    if (widget != nullptr)
        made.push_back(widget.get());
    return known;
}

Widget* Named(const char16_t* name)
{
    for (Widget* widget : made) {
        if (widget->GetName() == name)
            return widget;
    }
    ADD_FAILURE() << "no widget of this name";
    return nullptr;
}

std::u16string Get(const char16_t* name, const char16_t* key)
{
    WideString value;
    Widget* widget = Named(name);
    return widget != nullptr && widget->GetAttribute(key, value) ? value.ToU16String() : u"<unknown>";
}

void Set(const char16_t* name, const char16_t* key, const std::u16string& value)
{
    if (Widget* widget = Named(name))
        widget->SetAttribute(key, WideString(value));
}

// The main dialog with the layout that ships, shown at its size, on the
// thread's message loop.
class MainDialogTest : public ::testing::Test {
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

    void Command(const char16_t* name, std::uint32_t code = EventCode::kCommand)
    {
        dialog->OnWidgetCommand(other, {name, {}, code, {}});
    }
    void Drop(std::vector<std::u16string> files)
    {
        platform::SendToWindow(window, platform::kMessageDropFiles, platform::testing::MakeDrop(std::move(files)), 0);
    }
    // Runs idle passes until the check has ended and one more pass showed it.
    void WaitForCheck()
    {
        dialog->OnIdle();
        for (int i = 0; i < 2000 && Get(u"Message", u"Text") == u"処理中..."; ++i) {
            platform::SleepMilliseconds(5);
            dialog->OnIdle();
        }
        dialog->OnIdle();
    }
    // Starts a check that stays running until the returned descriptor is
    // closed: its path is a FIFO, which the check blocks reading from. The
    // write end opens once the check has the FIFO open.
    int StartHeldCheck()
    {
        const std::string fifo = dir.Native() + "/held.wav";
        EXPECT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        Set(u"WaveFilePath", u"Text", dir.PathOf("held.wav").ToU16String());
        Command(u"CheckStart");
        for (int i = 0; i < 2000; ++i) {
            const int writer = open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
            if (writer >= 0)
                return writer;
            platform::SleepMilliseconds(5);
        }
        ADD_FAILURE() << "the check never opened its file";
        return -1;
    }

    void Click(std::int32_t x, std::int32_t y)
    {
        platform::PostToWindow(window, platform::kMessageLeftButtonDown, 1, y << 16 | x);
        platform::PostToWindow(window, platform::kMessageLeftButtonUp, 0, y << 16 | x);
    }
    static void Key(std::uint32_t id, std::uintptr_t key)
    {
        platform::PostToWindow(platform::GetKeyboardFocus(), id, key, 0);
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
    // The Viewer that commands name as theirs; the dialog doesn't look at it.
    Viewer other{nullptr, nullptr};
};

TEST_F(MainDialogTest, TheShippedLayoutHoldsEachNamedWidgetOnce)
{
    std::map<std::u16string, std::string> kinds;
    for (Widget* widget : made) {
        const std::u16string name = widget->GetName().ToU16String();
        if (name.empty())
            continue;
        EXPECT_EQ(kinds.count(name), 0u);
        kinds[name] = dynamic_cast<Button*>(widget) ? "Button" : dynamic_cast<EditableText*>(widget) ? "Text" : "?";
    }
    const std::map<std::u16string, std::string> expected = {
        {u"WaveFilePath", "Text"}, {u"Message", "Text"},      {u"SelectWaveFile", "Button"},
        {u"CheckStart", "Button"}, {u"SearchError", "Button"}, {u"ReleaseNote", "Button"},
    };
    EXPECT_EQ(kinds, expected);
}

// What a user does: a click into the path, the path typed, a click on the
// start button, and the report read once the check has run, each step when
// the loop has run dry and had its idle pass. Tab then goes on from the
// path into the message, whose control takes many lines, as a report has.
TEST_F(MainDialogTest, ATypedPathIsCheckedAndItsReportShown)
{
    const std::u16string path = dir.PathOf("missing.wav").ToU16String();
    Run({
        [&] {
            Click(100, 44);
            return true;
        },
        [&] {
            // A click into the path selects nothing, so the typed path goes
            // after what stands there: Ctrl+A and a backspace clear it.
            Set(u"WaveFilePath", u"Text", u"old");
            platform::testing::SetControlKeyDown(true);
            Key(platform::kMessageKeyDown, u'A');
            return true;
        },
        [&] {
            platform::testing::SetControlKeyDown(false);
            for (char16_t character : u"\b" + path)
                Key(platform::kMessageChar, character);
            return true;
        },
        [&] {
            EXPECT_EQ(Get(u"WaveFilePath", u"Editing"), u"true");
            EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"true");
            Click(60, 210);
            return true;
        },
        [&] { return Get(u"Message", u"Text") == u"ファイルがありません。\r\n"; },
        [&] {
            EXPECT_EQ(Get(u"WaveFilePath", u"Editing"), u"false");
            EXPECT_EQ(Get(u"WaveFilePath", u"Text"), path);
            EXPECT_EQ(Get(u"SearchError", u"Enable"), u"true");
            Click(100, 44);
            return true;
        },
        [&] {
            Key(platform::kMessageKeyDown, platform::kKeyTab);
            return true;
        },
        [&] { return Get(u"Message", u"Editing") == u"true"; },
    });
    platform::testing::EditControlRecord control;
    ASSERT_TRUE(platform::testing::DescribeEditControl(platform::GetKeyboardFocus(), control));
    EXPECT_EQ(control.style & platform::kEditStyleMultiLine, platform::kEditStyleMultiLine);
}

// The start follows the path, and the report is shown unless the user is
// inside the message's text.
TEST_F(MainDialogTest, IdlePassesFollowThePathAndTheResult)
{
    dialog->OnIdle();
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"false");
    EXPECT_EQ(Get(u"SearchError", u"Enable"), u"false");
    Set(u"WaveFilePath", u"Text", u"x");
    dialog->OnIdle();
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"true");
    Set(u"WaveFilePath", u"Text", u"");
    dialog->OnIdle();
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"false");

    Set(u"Message", u"EditVisible", u"true");
    Set(u"Message", u"Text", u"typed");
    dialog->OnIdle();
    EXPECT_EQ(Get(u"Message", u"Text"), u"typed");
    Set(u"Message", u"EditVisible", u"false");
    dialog->OnIdle();
    EXPECT_EQ(Get(u"Message", u"Text"), u"");

    // Other codes and names do nothing.
    EXPECT_FALSE(dialog->OnWidgetCommand(other, {u"CheckStart", {}, 4, {}}));
    EXPECT_FALSE(dialog->OnWidgetCommand(other, {u"Other", {}, 1, {}}));
}

// A drop of several files is ignored without a word; one file must end in
// ".wav", in any case. Every drop is finished.
TEST_F(MainDialogTest, OneDroppedWaveFileBecomesThePath)
{
    Set(u"WaveFilePath", u"Text", u"before");
    Drop({u"a.wav", u"b.wav"});
    Drop({u"C:\\music\\a.wav.txt"});
    EXPECT_EQ(Get(u"WaveFilePath", u"Text"), u"before");
    const auto boxes = platform::testing::TakeMessageBoxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, u"Wavファイルではありません。");
    EXPECT_EQ(boxes[0].caption, u"Sondara");
    EXPECT_EQ(boxes[0].type, 0u);
    Drop({u"C:\\music\\A.WAV"});
    EXPECT_EQ(Get(u"WaveFilePath", u"Text"), u"C:\\music\\A.WAV");
    EXPECT_EQ(platform::testing::OpenDrops(), 0);
}

TEST_F(MainDialogTest, AChosenFileReplacesThePathAndTheResult)
{
    Set(u"WaveFilePath", u"Text", dir.PathOf("missing.wav").ToU16String());
    Command(u"CheckStart");
    WaitForCheck();
    ASSERT_EQ(Get(u"SearchError", u"Enable"), u"true");

    // A cancel changes nothing.
    platform::testing::TakeCallLog();
    Command(u"SelectWaveFile");
    EXPECT_EQ(platform::testing::TakeCallLog(), std::vector<std::string>{"ShowOpenFileDialog"});
    dialog->OnIdle();
    EXPECT_EQ(Get(u"SearchError", u"Enable"), u"true");

    platform::testing::SetOpenFileDialogAnswer(u"C:\\chosen.wav");
    Command(u"SelectWaveFile");
    EXPECT_EQ(Get(u"WaveFilePath", u"Text"), u"C:\\chosen.wav");
    dialog->OnIdle();
    EXPECT_EQ(Get(u"SearchError", u"Enable"), u"false");
    EXPECT_EQ(Get(u"Message", u"Text"), u"");
}

// The search offers the report's lines, in order, and opens the one chosen
// with its value suffix and blank as they stand; a dismissal opens nothing.
TEST_F(MainDialogTest, TheSearchOffersTheReportsLinesAndTheReleaseNoteTheRunningVersion)
{
    const std::string wave = Wave(FormatBody(3, 7, 44100, 32), std::string(5, '\0'));
    Set(u"WaveFilePath", u"Text", dir.Write("odd.wav", wave).ToU16String());
    Command(u"CheckStart");
    WaitForCheck();
    std::vector<std::pair<std::uintptr_t, std::u16string>> lines;
    const std::u16string report = Get(u"Message", u"Text");
    for (std::size_t start = 0, end = 0; (end = report.find(u"\r\n", start)) != std::u16string::npos; start = end + 2)
        lines.emplace_back(lines.size() + 1, report.substr(start, end - start));
    ASSERT_GE(lines.size(), 3u);

    const auto search = [this] {
        platform::testing::TakeCallLog();
        dialog->OnWidgetCommand(other, {u"SearchError", {}, EventCode::kCommand, {}});
        std::vector<std::string> calls;
        for (std::string& call : platform::testing::TakeCallLog())
            if (call.rfind("TrackMenu", 0) == 0 || call.rfind("OpenWithShell", 0) == 0)
                calls.push_back(call);
        return calls;
    };
    platform::testing::SetCursorScreenPosition(300, 200);
    platform::testing::SetMenuChoice(2);
    EXPECT_EQ(search(), (std::vector<std::string>{"TrackMenu 300 200",
                                                  "OpenWithShell open http://www.sondara.example/search.php?query=" +
                                                      WideToUtf8(lines[1].second)}));
    EXPECT_EQ(platform::testing::TrackedMenuEntries(), lines);
    EXPECT_EQ(platform::testing::OpenMenus(), 0);
    platform::testing::SetMenuChoice(0);
    EXPECT_EQ(search(), std::vector<std::string>{"TrackMenu 300 200"});

    // The release note opens the running version's page.
    platform::testing::TakeCallLog();
    Command(u"ReleaseNote");
    EXPECT_EQ(platform::testing::TakeCallLog(),
              (std::vector<std::string>{
                  "OpenWithShell open http://www.sondara.example/press_release.php?file_name=sondara_100",
                  "EnableWindowInput 1"}));
}

TEST_F(MainDialogTest, LeavesTheLoopWhenItsWindowGoes)
{
    // The backing bitmap covers the whole window: erasing would flicker.
    EXPECT_EQ(platform::SendToWindow(window, platform::kMessageEraseBackground, 0, 0), 1);
    platform::Message message;
    message.window = window;
    message.id = platform::kMessageUser;
    // The dialog's filter uses up every message of its window.
    EXPECT_TRUE(loop.PreTranslateMessage(message));
    platform::SendToWindow(window, platform::kMessageCommand, 2, 0);
    EXPECT_FALSE(platform::IsLiveWindow(window));
    EXPECT_FALSE(loop.PreTranslateMessage(message));
    EXPECT_EQ(dialog->GetWindow(), nullptr);
    platform::Message quit;
    EXPECT_EQ(platform::WaitForMessage(quit), 0);
    EXPECT_EQ(quit.wParam, 2u);
}

// While a check runs, its report and result flag are the worker's: the
// idle passes show that it runs and offer neither a start nor a search,
// whatever the path. Run under ThreadSanitizer, this shows the dialog
// keeps its hands off them until the worker has ended.
using CheckHandOverDialog = MainDialogTest;

TEST_F(CheckHandOverDialog, APathChosenWhileACheckRunsDropsItsResult)
{
    const int writer = StartHeldCheck();
    dialog->OnIdle();
    EXPECT_EQ(Get(u"Message", u"Text"), u"処理中...");
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"false");
    EXPECT_EQ(Get(u"SearchError", u"Enable"), u"false");

    Drop({u"C:\\music\\next.wav"});
    EXPECT_EQ(Get(u"WaveFilePath", u"Text"), u"C:\\music\\next.wav");
    dialog->OnIdle();
    EXPECT_EQ(Get(u"Message", u"Text"), u"処理中...");
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"false");

    // The held file ends empty, which is a finding; but the check was of
    // the old path, so the first pass after its end shows no report, and
    // the start follows the new path.
    close(writer);
    WaitForCheck();
    EXPECT_EQ(Get(u"Message", u"Text"), u"");
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"true");
    EXPECT_EQ(Get(u"SearchError", u"Enable"), u"false");
    EXPECT_TRUE(dialog->GetReport().IsEmpty());
    EXPECT_FALSE(dialog->ReportHasError());
}

TEST_F(CheckHandOverDialog, ASecondStartWaitsForTheRunningCheck)
{
    const int writer = StartHeldCheck();
    Set(u"WaveFilePath", u"Text", dir.Write("sound.wav", SoundWave()).ToU16String());
    dialog->OnIdle();
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"false");

    // A start that comes all the same, as a command from elsewhere, waits
    // for the running check to end before it starts one on the path as it
    // stands: never two workers, and the report is the new path's. The held
    // check ends only when another thread lets it, a while later; the start
    // must not come back before.
    std::atomic<bool> released{false};
    std::thread releaser([&] {
        platform::SleepMilliseconds(200);
        released = true;
        close(writer);
    });
    Command(u"CheckStart");
    EXPECT_TRUE(released) << "the second start did not wait for the running check";
    releaser.join();
    WaitForCheck();
    EXPECT_EQ(Get(u"Message", u"Text"), u"チェック完了しました。\r\n");
    EXPECT_FALSE(dialog->ReportHasError());
    EXPECT_EQ(Get(u"CheckStart", u"Enable"), u"true");
    EXPECT_EQ(Get(u"SearchError", u"Enable"), u"false");
}

} // namespace
