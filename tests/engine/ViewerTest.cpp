#include "engine/InputWidget.h"

#include "files/PathParts.h"
#include "platform/FileSystem.h"
#include "platform/SystemSettings.h"
#include "support/TempDir.h"
#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {

class Window : public WindowWidget {
public:
    explicit Window(Viewer* owner) : WindowWidget(owner) {}
    void SyncWindow() override {}
};

using ViewerLists = ViewerFixture;

TEST_F(ViewerLists, WidgetsEnterAndLeaveTheListsAndResizeReplacesTheBitmap)
{
    auto input = std::make_unique<InputWidget>(&viewer);
    auto window = std::make_unique<Window>(&viewer);
    InputWidget* inputWidget = input.get();
    Window* windowWidget = window.get();
    viewer.AppendWidget(std::move(input));
    viewer.AppendWidget(std::move(window));
    viewer.AppendWidget(std::make_unique<PositionedWidget>(&viewer));
    EXPECT_EQ(viewer.WidgetCount(), 3u);

    // Bringing a widget to the front gives it the focus; sending it back
    // takes it away.
    EXPECT_TRUE(viewer.BringToFront(inputWidget));
    EXPECT_EQ(viewer.GetFocus(), inputWidget);
    EXPECT_EQ(viewer.GetLastWidget(), inputWidget);
    EXPECT_TRUE(viewer.BringToFront(windowWidget));
    EXPECT_EQ(viewer.GetFocus(), windowWidget);
    EXPECT_TRUE(viewer.SendToBack(windowWidget));
    EXPECT_EQ(viewer.GetFocus(), nullptr);
    EXPECT_EQ(viewer.GetLastWidget(), inputWidget);

    // A widget that goes takes itself out of the lists and the focus, also
    // one outside the widget list, as the parts of a composite widget are.
    viewer.BringToFront(inputWidget);
    viewer.Clear();
    EXPECT_EQ(viewer.WidgetCount(), 0u);
    EXPECT_EQ(viewer.GetFocus(), nullptr);
    {
        InputWidget part(&viewer);
        viewer.BringToFront(&part);
        EXPECT_EQ(viewer.GetFocus(), &part);
    }
    EXPECT_EQ(viewer.GetFocus(), nullptr);

    EXPECT_EQ(viewer.Dpi, 0);
    ResizeView(40, 30);
    EXPECT_EQ(viewer.Dpi, static_cast<float>(platform::GetScreenDpiX()));
    EXPECT_EQ(Describe(viewer.GetBitmapRect()), "0,0,40,30");

    // A resolution once known stays; a size of 0 leaves a view without extent.
    viewer.Dpi = 72;
    ResizeView(0, 30);
    EXPECT_EQ(viewer.Dpi, 72);
    EXPECT_EQ(viewer.GetViewWidth(), 0);
    EXPECT_EQ(viewer.GetViewHeight(), 0);

    ResizeView(50, 20);
    EXPECT_TRUE(viewer.Resize(nullptr, -1, 5));
    EXPECT_EQ(viewer.GetBitmapRect().width, 0);
    EXPECT_FALSE(viewer.Resize(nullptr, 10, 10));
}

using ViewerLoad = ViewerFixture;

std::u16string Attribute(Viewer& viewer, const char16_t* name, const char16_t* key)
{
    WideString value;
    if (!viewer.GetWidgetAttribute(name, key, value))
        return u"<none>";
    return value.ToU16String();
}

// Sections become widgets in file order; a layout is sought in the folder
// above where it is missing, and its folder becomes the current directory.
TEST_F(ViewerLoad, SectionsBecomeWidgetsInFileOrderFromALayoutSoughtInTheFolderAbove)
{
    const WideString before = GetCurrentDir();
    TempDir dir;
    const WideString path = dir.Write("Main.jpn", "[Plain]\r\nName=A\r\nPos=L1,T1,L10,T10\r\n"
                                                  "[Viewer]\r\nGroup=G1,G2\r\nDpi=120\r\n"
                                                  "[plain]\r\nName=Lower\r\n"
                                                  "[Unknown]\r\nName=U\r\n"
                                                  "[Input]\r\nName=B\r\nRelPos=L5,0,W10,H10\r\n"
                                                  "[Plain]\r\nName=A\r\nPos=L0,T0,R1,B1\r\n"
                                                  "[Viewer]\r\nDpi=x\r\n");
    ASSERT_TRUE(viewer.Load(path, false));
    EXPECT_EQ(viewer.WidgetCount(), 3u);
    EXPECT_EQ(viewer.GetLayoutPath(), path);
    EXPECT_EQ(viewer.GetCurrentGroup(), u"G1,G2");
    // The last Viewer section wins, and a Dpi that isn't a number reads as 0.
    EXPECT_EQ(viewer.Dpi, 0);

    // The second widget was placed against the first; the first of two
    // widgets of one name is the one reached by it.
    EXPECT_EQ(Attribute(viewer, u"A", u"Width"), u"9");
    EXPECT_EQ(Attribute(viewer, u"B", u"Width"), u"10");
    EXPECT_EQ(Attribute(viewer, u"Lower", u"Width"), u"<none>");
    EXPECT_EQ(Attribute(viewer, u"U", u"Width"), u"<none>");
    EXPECT_EQ(Attribute(viewer, u"B", u"Key"), u"<none>");
    bool flag = false;
    EXPECT_TRUE(viewer.GetWidgetBool(u"B", u"Enable", flag));
    EXPECT_TRUE(flag);
    EXPECT_FALSE(viewer.GetWidgetBool(u"Nobody", u"Enable", flag));

    // keep lays a second layout over the first, and its first widget is
    // placed against the last old one.
    const WideString more = dir.Write("More.jpn", "[Plain]\r\nName=C\r\nRelPos=L0,T0,0,0\r\n");
    ASSERT_TRUE(viewer.Load(more, true));
    EXPECT_EQ(viewer.WidgetCount(), 4u);
    EXPECT_EQ(Attribute(viewer, u"C", u"Width"), u"0");

    // Without keep only the new file's widgets stay; the group and the
    // resolution survive the clearing.
    viewer.Dpi = 96;
    ASSERT_TRUE(viewer.Load(more, false));
    EXPECT_EQ(viewer.WidgetCount(), 1u);
    EXPECT_EQ(Attribute(viewer, u"A", u"Width"), u"<none>");
    EXPECT_EQ(viewer.GetCurrentGroup(), u"G1,G2");
    EXPECT_EQ(viewer.Dpi, 96);

    const WideString program = dir.MakeDir("program");
    const WideString layout = dir.Write("Main.jpn", "[Plain]\r\nName=Above\r\n");

    ASSERT_TRUE(viewer.Load(AddTrailingBackslash(program) + u"Main.jpn", false));
    EXPECT_EQ(viewer.GetLayoutPath(), layout);
    EXPECT_EQ(AddTrailingBackslash(GetCurrentDir()), PathParts(layout).GetDriveDir());
    EXPECT_EQ(Attribute(viewer, u"Above", u"Enable"), u"true");

    // A path without a drive is taken by its name from the current directory.
    ASSERT_TRUE(platform::ChangeCurrentDirectory(program.View()));
    ASSERT_TRUE(viewer.Load(u"elsewhere/Main.jpn", false));
    EXPECT_EQ(viewer.GetLayoutPath(), layout);

    // Missing in both folders: false, nothing added, the old path stays,
    // and the folder above is current now.
    ASSERT_TRUE(platform::ChangeCurrentDirectory(program.View()));
    EXPECT_FALSE(viewer.Load(AddTrailingBackslash(program) + u"Missing.jpn", false));
    EXPECT_EQ(viewer.WidgetCount(), 0u);
    EXPECT_EQ(viewer.GetLayoutPath(), u"");
    EXPECT_EQ(AddTrailingBackslash(GetCurrentDir()), PathParts(layout).GetDriveDir());

    platform::ChangeCurrentDirectory(before.View());
}

} // namespace
