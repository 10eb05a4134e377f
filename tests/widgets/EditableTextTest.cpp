#include "widgets/EditableText.h"
#include "widgets/WidgetFactory.h"

#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/EditControl.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/ThreadState.h"
#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using platform::testing::EditControlRecord;

// Text fields on a shown window of the stand-in whose messages go to the
// Viewer, as the main dialog's do, with a message loop on the thread for
// the edit controls' key filter. Keys and characters reach the controls as
// the loop delivers them: through its filters first.
class EditableTextTest : public ViewerFixture {
public:
    EditableTextTest() : ViewerFixture(WidgetFactory) {}

protected:
    void SetUp() override
    {
        ViewerFixture::SetUp();
        platform::testing::ResetStandIn();
        MessageLoopRegistry::SetProcess(&registry);
        registry.Add(platform::CurrentThreadId(), &loop);
        current = this;
        host.window = platform::CreateDialogWindow(nullptr, 129, ToViewer);
        ASSERT_NE(host.window, nullptr);
        platform::ShowWindowAs(host.window, platform::kShowNormal);
        ResizeView(200, 100);
    }
    void TearDown() override
    {
        ViewerFixture::TearDown();
        registry.Remove();
        MessageLoopRegistry::SetProcess(nullptr);
        platform::testing::ResetStandIn();
    }

    static bool ToViewer(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                         std::intptr_t lParam, std::intptr_t&)
    {
        return current->viewer.OnMessage(window, message, wParam, lParam);
    }

    EditableText& Field(const char16_t* name, const char16_t* pos, const char16_t* option,
                        const char16_t* text = u"")
    {
        viewer.AddSection(u"EditableText",
                          MapOf({{u"Name", name}, {u"Pos", pos}, {u"Option", option}, {u"Text", text}}));
        return *dynamic_cast<EditableText*>(viewer.GetLastWidget());
    }

    void Deliver(std::uint32_t id, std::uintptr_t wParam)
    {
        platform::Message message{platform::GetKeyboardFocus(), id, wParam};
        if (!loop.PreTranslateMessage(message))
            platform::DeliverMessage(message);
    }
    void Key(std::uintptr_t key, char16_t character = 0)
    {
        Deliver(platform::kMessageKeyDown, key);
        if (character != 0)
            Deliver(platform::kMessageChar, character);
        Deliver(platform::kMessageKeyUp, key);
    }
    void Type(std::u16string_view text)
    {
        for (char16_t character : text)
            Deliver(platform::kMessageChar, character);
    }
    void Click(std::int32_t x, std::int32_t y)
    {
        platform::SendToWindow(host.window, platform::kMessageLeftButtonDown, 1, y << 16 | x);
        platform::SendToWindow(host.window, platform::kMessageLeftButtonUp, 0, y << 16 | x);
    }

    static EditControlRecord Control()
    {
        EditControlRecord record;
        EXPECT_TRUE(platform::testing::DescribeEditControl(platform::GetKeyboardFocus(), record));
        return record;
    }

    static inline EditableTextTest* current = nullptr;
    MessageLoopRegistry registry;
    MessageLoop loop;
};

using CodeList = std::vector<std::uint32_t>;

TEST_F(EditableTextTest, OneLineEditsFromAClickToEnterFocusLossOrAClickOutside)
{
    EditableText& field = Field(u"Path", u"L10,T10,L110,T30", u"SingleLine,Edge");
    EXPECT_EQ(Get(field, u"Editing"), u"false");

    Click(20, 20);
    EXPECT_EQ(Get(field, u"Editing"), u"true");
    EXPECT_EQ(Get(field, u"Focus"), u"true");
    EXPECT_EQ(viewer.GetFocus(), &field);
    const EditControlRecord made = Control();
    EXPECT_EQ(made.parent, host.window);
    EXPECT_EQ(made.style, platform::kEditStyleBase);
    EXPECT_EQ(made.bounds.left, 11);
    EXPECT_EQ(made.bounds.bottom, 29);
    EXPECT_EQ(made.fontHeight, -13);
    EXPECT_EQ(Codes(), CodeList{6});

    // Each change of the text is a command; Enter commits, with the end.
    Type(u"ab");
    EXPECT_EQ(Codes(), (CodeList{1, 1}));
    platform::testing::SetControlKeyDown(true);
    Key(u'A');
    platform::testing::SetControlKeyDown(false);
    EXPECT_EQ(Get(field, u"SelectPosition"), u"0,2");
    Key(platform::kKeyReturn);
    EXPECT_EQ(Get(field, u"Editing"), u"false");
    EXPECT_EQ(Codes(), (CodeList{1, 2}));
    EXPECT_EQ(Get(field, u"Text"), u"ab");
    EXPECT_EQ(viewer.GetFocus(), nullptr);
    EXPECT_EQ(platform::GetKeyboardFocus(), host.window);

    // Enter reports an end even when nothing changed; focus loss then
    // gives up the focus without a word.
    Click(20, 20);
    Codes();
    Key(platform::kKeyReturn);
    EXPECT_EQ(Codes(), (CodeList{1, 2}));
    Click(20, 20);
    Codes();
    platform::SetKeyboardFocus(nullptr);
    EXPECT_EQ(Get(field, u"Editing"), u"false");
    EXPECT_EQ(Codes(), CodeList{});
    EXPECT_EQ(viewer.GetFocus(), nullptr);

    // A change commits on focus loss and on a click outside.
    Click(20, 20);
    Type(u"c");
    platform::SetKeyboardFocus(host.window);
    EXPECT_EQ(Get(field, u"Text"), u"abc");
    Click(20, 20);
    Type(u"d");
    Codes();
    Click(150, 50);
    EXPECT_EQ(Get(field, u"Editing"), u"false");
    EXPECT_EQ(Codes(), (CodeList{1, 2}));
    EXPECT_EQ(Get(field, u"Text"), u"abcd");
}

TEST_F(EditableTextTest, TabWalksBetweenFieldsAndEnterBreaksAManyLineOne)
{
    EditableText& path = Field(u"Path", u"L10,T10,L110,T30", u"SingleLine,TabStop");
    EditableText& report = Field(u"Report", u"L10,T40,L110,T90", u"MultiLine,TabStop");

    Click(20, 20);
    Type(u"x");
    Key(platform::kKeyTab);
    EXPECT_EQ(Get(path, u"Editing"), u"false");
    EXPECT_EQ(Get(path, u"Text"), u"x");
    EXPECT_EQ(Get(report, u"Editing"), u"true");
    EXPECT_EQ(viewer.GetFocus(), &report);
    EXPECT_EQ(Control().style, platform::kEditStyleBase | platform::kEditStyleMultiLine);

    Type(u"a");
    Key(platform::kKeyReturn, u'\r');
    Type(u"b");
    EXPECT_EQ(Get(report, u"Editing"), u"true");
    EXPECT_EQ(Get(report, u"Text"), u"a\r\nb");

    platform::testing::SetShiftKeyDown(true);
    Key(platform::kKeyTab);
    platform::testing::SetShiftKeyDown(false);
    EXPECT_EQ(Get(report, u"Editing"), u"false");
    EXPECT_EQ(Get(report, u"Text"), u"a\r\nb");
    EXPECT_EQ(viewer.GetFocus(), &path);
    // Entering by Tab selects the whole text.
    EXPECT_EQ(Control().selectionEnd, 1);
    EXPECT_EQ(Control().selectionStart, 0);
}

TEST_F(EditableTextTest, TheTypedTextOutlivesTheWindowItWasTypedIn)
{
    EditableText& field = Field(u"Path", u"L10,T10,L110,T30", u"SingleLine");
    Click(20, 20);
    Type(u"kept");
    const platform::WindowHandle control = platform::GetKeyboardFocus();
    ASSERT_TRUE(platform::DestroyDialogWindow(host.window));
    host.window = nullptr;
    EXPECT_FALSE(platform::IsLiveWindow(control));
    EXPECT_EQ(Get(field, u"Editing"), u"true");
    EXPECT_EQ(Get(field, u"Text"), u"kept");
    field.SetAttribute(u"EditVisible", u"false");
    EXPECT_EQ(Get(field, u"Text"), u"kept");
}

// The box's options become the control's style, its font the control's
// font, and a long text in a box that scrolls to its end shows its last
// line; a text the control shows already isn't set again. A password is
// drawn as stars and read in clear; a number field takes only numbers and
// counts putting the old text back as an update of its own.
TEST_F(EditableTextTest, TheOptionsShapeTheControlAndWhatItTakes)
{
    viewer.AddSection(u"EditableText", MapOf({{u"Pos", u"L10,T10,L110,T90"}, {u"Align", u"R"},
                                              {u"Option", u"MultiLine,VScroll,ScrollLast"},
                                              {u"Font", u"10.5,Noto Sans CJK JP"}}));
    Widget& log = *viewer.GetLastWidget();
    log.SetAttribute(u"Text", u"1\r\n2\r\n3\r\n4\r\n5");
    log.SetAttribute(u"EditVisible", u"true");
    EXPECT_EQ(Control().style, platform::kEditStyleBase | platform::kEditStyleMultiLine |
                                   platform::kEditStyleVerticalScrollBar | platform::kEditStyleRight);
    EXPECT_EQ(Control().fontHeight, -14);
    EXPECT_EQ(Control().fontFace, u"Noto Sans CJK JP");
    EXPECT_EQ(Control().firstVisibleLine, 4);
    Codes();
    EXPECT_FALSE(log.SetAttribute(u"Text", u"1\r\n2\r\n3\r\n4\r\n5"));
    EXPECT_EQ(Codes(), CodeList{});
    log.SetAttribute(u"EditVisible", u"false");

    EditableText& secret = Field(u"Secret", u"L10,T10,L110,T30", u"Password", u"secret");
    platform::testing::TakeDrawnTexts();
    viewer.PaintAll();
    const auto drawn = platform::testing::TakeDrawnTexts();
    ASSERT_FALSE(drawn.empty());
    EXPECT_EQ(drawn.back().text, u"******");
    EXPECT_EQ(Get(secret, u"Text"), u"secret");
    secret.SetAttribute(u"EditVisible", u"true");
    EXPECT_EQ(Control().style, platform::kEditStyleBase | platform::kEditStylePassword);
    EXPECT_EQ(Control().text, u"secret");
    secret.SetAttribute(u"EditVisible", u"false");

    EditableText& count = Field(u"Count", u"L10,T10,L110,T30", u"Number", u"0");
    const std::pair<const char16_t*, bool> numbers[] = {
        {u"-12.5", true}, {u".", true}, {u"1.2.3", false}, {u"1e3", false}, {u" 1", false}};
    for (const auto& [typed, accepted] : numbers) {
        count.SetAttribute(u"EditVisible", u"true");
        count.SetAttribute(u"Text", typed);
        Codes();
        count.SetAttribute(u"EditVisible", u"false");
        EXPECT_EQ(Get(count, u"Text"), accepted ? typed : u"0");
        EXPECT_EQ(Codes(), (accepted ? CodeList{1, 2} : CodeList{1, 1, 2}));
        count.SetAttribute(u"Text", u"0");
    }
}

} // namespace
