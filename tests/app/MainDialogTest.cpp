#include "app/MainDialog.h"

#include "engine/InputWidget.h"
#include "layouttext/AttributeMap.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/Thread.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <string>

namespace {

// What the dialog expects of its named widgets, and no more: a Text that
// can be read and written, an Enable flag, and for the message whether the
// user is inside it. Every field keeps its state in a map by name, so that
// tests read it without the Viewer.
struct FieldState {
    std::u16string text;
    bool enabled = true;
    bool editing = false;
    int writes = 0;
};
std::map<std::u16string, FieldState> fields;

class Field : public InputWidget {
public:
    explicit Field(Viewer* owner) : InputWidget(owner) {}

    bool Load(const AttributeMap& map) override
    {
        const bool changed = InputWidget::Load(map);
        fields[GetName().ToU16String()] = {};
        return changed;
    }
    bool SetAttribute(const WideString& key, const WideString& value) override
    {
        FieldState& state = fields[GetName().ToU16String()];
        if (key == u"Text" && state.text != value.View()) {
            state.text = value.ToU16String();
            ++state.writes;
            return true;
        }
        if (key == u"Enable" && state.enabled != (value == u"true")) {
            state.enabled = value == u"true";
            return true;
        }
        return false;
    }
    bool GetAttribute(const WideString& key, WideString& value) override
    {
        const FieldState& state = fields[GetName().ToU16String()];
        if (key == u"Text")
            value = WideString(state.text);
        else if (key == u"Editing" && GetName() == u"Message")
            value = state.editing ? u"true" : u"false";
        else
            return InputWidget::GetAttribute(key, value);
        return true;
    }
};

bool FieldFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget)
{
    if (!(sectionName == u"Field"))
        return false;
    widget = std::make_unique<Field>(viewer);
    return true;
}

constexpr char kLayout[] = "[Field]\r\nName=WaveFilePath\r\n"
                           "[Field]\r\nName=Message\r\n"
                           "[Field]\r\nName=CheckStart\r\n"
                           "[Field]\r\nName=SearchError\r\n";

class MainDialogTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        platform::testing::ResetStandIn();
        fields.clear();
        dialog = std::make_unique<MainDialog>(FieldFactory, dir.Write("Main.jpn", kLayout));
        ASSERT_NE(dialog->Create(nullptr, MainDialog::kTemplateId), nullptr);
    }
    void TearDown() override
    {
        dialog.reset();
        platform::testing::ResetStandIn();
    }

    void Command(const char16_t* name, std::uint32_t code = EventCode::kCommand)
    {
        dialog->OnWidgetCommand(other, {name, {}, code, {}});
    }
    void Drop(std::vector<std::u16string> files)
    {
        platform::SendToWindow(dialog->GetWindow(), platform::kMessageDropFiles,
                               platform::testing::MakeDrop(std::move(files)), 0);
    }
    // Runs idle passes until the check has ended and one more pass showed it.
    void WaitForCheck()
    {
        dialog->OnIdle();
        for (int i = 0; i < 2000 && fields[u"Message"].text == u"処理中..."; ++i) {
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
        fields[u"WaveFilePath"].text = dir.PathOf("held.wav").ToU16String();
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

    TempDir dir;
    std::unique_ptr<MainDialog> dialog;
    // The Viewer that commands name as theirs; the dialog doesn't look at it.
    Viewer other{nullptr, nullptr};
};

TEST_F(MainDialogTest, IdlePassesFollowThePathAndTheResult)
{
    dialog->OnIdle();
    EXPECT_EQ(fields[u"Message"].text, u"");
    EXPECT_FALSE(fields[u"CheckStart"].enabled);
    EXPECT_FALSE(fields[u"SearchError"].enabled);

    // A typed path enables the start, an emptied one disables it again.
    fields[u"WaveFilePath"].text = u"x";
    dialog->OnIdle();
    EXPECT_TRUE(fields[u"CheckStart"].enabled);
    fields[u"WaveFilePath"].text.clear();
    dialog->OnIdle();
    EXPECT_FALSE(fields[u"CheckStart"].enabled);

    // A check of a file that isn't there gives a report worth searching for.
    fields[u"WaveFilePath"].text = dir.PathOf("missing.wav").ToU16String();
    Command(u"CheckStart");
    WaitForCheck();
    EXPECT_NE(fields[u"Message"].text.find(u"\r\n"), std::u16string::npos);
    EXPECT_TRUE(fields[u"SearchError"].enabled);
    EXPECT_TRUE(dialog->ReportHasError());

    // While the user is inside the message, the report isn't forced back.
    fields[u"Message"].editing = true;
    fields[u"Message"].text = u"typed";
    dialog->OnIdle();
    EXPECT_EQ(fields[u"Message"].text, u"typed");
    fields[u"Message"].editing = false;
    dialog->OnIdle();
    EXPECT_EQ(fields[u"Message"].text, dialog->GetReport().View());

    // Other codes and names do nothing.
    EXPECT_FALSE(dialog->OnWidgetCommand(other, {u"CheckStart", {}, 4, {}}));
    EXPECT_FALSE(dialog->OnWidgetCommand(other, {u"Other", {}, 1, {}}));
}

TEST_F(MainDialogTest, OneDroppedWaveFileBecomesThePath)
{
    fields[u"WaveFilePath"].text = u"before";
    Drop({u"a.wav", u"b.wav"});
    EXPECT_EQ(fields[u"WaveFilePath"].text, u"before");
    Drop({u"C:\\music\\a.wav.txt"});
    EXPECT_EQ(fields[u"WaveFilePath"].text, u"before");
    const auto boxes = platform::testing::TakeMessageBoxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, u"Wavファイルではありません。");
    EXPECT_EQ(boxes[0].caption, u"Sondara");
    EXPECT_EQ(boxes[0].type, 0u);

    Drop({u"C:\\music\\A.WAV"});
    EXPECT_EQ(fields[u"WaveFilePath"].text, u"C:\\music\\A.WAV");
    EXPECT_TRUE(platform::testing::TakeMessageBoxes().empty());
    EXPECT_EQ(platform::testing::OpenDrops(), 0);
}

TEST_F(MainDialogTest, AChosenFileReplacesThePathAndTheResult)
{
    fields[u"WaveFilePath"].text = dir.PathOf("missing.wav").ToU16String();
    Command(u"CheckStart");
    WaitForCheck();
    ASSERT_TRUE(fields[u"SearchError"].enabled);

    // A cancel changes nothing.
    platform::testing::TakeCallLog();
    Command(u"SelectWaveFile");
    EXPECT_EQ(platform::testing::TakeCallLog(), std::vector<std::string>{"ShowOpenFileDialog"});
    dialog->OnIdle();
    EXPECT_TRUE(fields[u"SearchError"].enabled);

    platform::testing::SetOpenFileDialogAnswer(u"C:\\chosen.wav");
    Command(u"SelectWaveFile");
    EXPECT_EQ(fields[u"WaveFilePath"].text, u"C:\\chosen.wav");
    dialog->OnIdle();
    EXPECT_FALSE(fields[u"SearchError"].enabled);
    EXPECT_EQ(fields[u"Message"].text, u"");
}

TEST_F(MainDialogTest, TheReleaseNoteOpensTheRunningVersionsPage)
{
    platform::testing::TakeCallLog();
    Command(u"ReleaseNote");
    EXPECT_EQ(platform::testing::TakeCallLog(),
              (std::vector<std::string>{
                  "OpenWithShell open http://www.sondara.example/press_release.php?file_name=sondara_100",
                  "EnableWindowInput 1"}));
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
    EXPECT_EQ(fields[u"Message"].text, u"処理中...");
    EXPECT_FALSE(fields[u"CheckStart"].enabled);
    EXPECT_FALSE(fields[u"SearchError"].enabled);

    Drop({u"C:\\music\\next.wav"});
    EXPECT_EQ(fields[u"WaveFilePath"].text, u"C:\\music\\next.wav");
    dialog->OnIdle();
    EXPECT_EQ(fields[u"Message"].text, u"処理中...");
    EXPECT_FALSE(fields[u"CheckStart"].enabled);

    // The held file ends empty, which is a finding; but the check was of
    // the old path, so the first pass after its end shows no report, and
    // the start follows the new path.
    close(writer);
    WaitForCheck();
    EXPECT_EQ(fields[u"Message"].text, u"");
    EXPECT_TRUE(fields[u"CheckStart"].enabled);
    EXPECT_FALSE(fields[u"SearchError"].enabled);
    EXPECT_TRUE(dialog->GetReport().IsEmpty());
    EXPECT_FALSE(dialog->ReportHasError());
}

TEST_F(CheckHandOverDialog, ASecondStartWaitsForTheRunningCheck)
{
    const int writer = StartHeldCheck();
    const std::u16string sound = dir.Write("sound.wav", SoundWave()).ToU16String();
    fields[u"WaveFilePath"].text = sound;
    dialog->OnIdle();
    EXPECT_FALSE(fields[u"CheckStart"].enabled);

    // A start that comes all the same, as a command from elsewhere, waits
    // for the running check to end before it starts one on the path as it
    // stands: never two workers, and the report is the new path's.
    close(writer);
    Command(u"CheckStart");
    WaitForCheck();
    EXPECT_EQ(fields[u"Message"].text, u"チェック完了しました。\r\n");
    EXPECT_FALSE(dialog->ReportHasError());
    EXPECT_TRUE(fields[u"CheckStart"].enabled);
    EXPECT_FALSE(fields[u"SearchError"].enabled);
}

} // namespace
