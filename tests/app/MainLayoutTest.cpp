#include "layouttext/AttributeMap.h"
#include "layouttext/LayoutDocument.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

// The layout that ships beside the program holds every widget the dialog
// expects, once each and of the class it needs.
TEST(MainLayout, HoldsTheWidgetsTheDialogNames)
{
    LayoutDocument layout;
    ASSERT_TRUE(layout.Load(WideString::FromAscii(SONDARA_MAIN_LAYOUT)));
    std::map<std::u16string, std::u16string> classes;
    std::map<std::u16string, int> counts;
    bool viewer = false;
    for (std::int32_t i = 0; i < layout.GetSectionCount(); ++i) {
        const AttributeMap& map = layout.GetSectionMap(i);
        viewer |= layout.GetSectionName(i) == u"Viewer";
        const std::u16string name = map.GetRaw(u"Name").ToU16String();
        if (name.empty())
            continue;
        classes[name] = layout.GetSectionName(i).ToU16String();
        ++counts[name];
        if (name == u"Message") {
            EXPECT_TRUE(map.HasItem(u"Option", u"MultiLine"));
        }
    }
    EXPECT_TRUE(viewer);
    const std::map<std::u16string, std::u16string> expected = {
        {u"WaveFilePath", u"EditableText"}, {u"Message", u"EditableText"}, {u"SelectWaveFile", u"Button"},
        {u"CheckStart", u"Button"},         {u"SearchError", u"Button"},   {u"ReleaseNote", u"Button"},
    };
    EXPECT_EQ(classes, expected);
    for (const auto& [name, count] : counts)
        EXPECT_EQ(count, 1);
}

} // namespace
