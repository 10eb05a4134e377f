#include "widgets/WidgetFactory.h"

#include "platform/Bitmap.h"
#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

class TextDraw : public ViewerFixture {
public:
    TextDraw() : ViewerFixture(WidgetFactory) {}
};

// Real glyphs: some pixels inside the rectangle turn dark, none outside.
TEST_F(TextDraw, GlyphsStayInsideTheRectangle)
{
    ResizeView(120, 40);
    viewer.AddSection(u"Brush", MapOf({{u"Pos", u"L0,T0,R0,B0"}, {u"Color", u"FFFFFFFF"}}));
    viewer.AddSection(u"Text", MapOf({{u"Pos", u"L10,T5,L110,T35"}, {u"Text", u"WWWW"}, {u"Font", u"16"},
                                      {u"Color", u"FF000000"}}));
    ASSERT_TRUE(viewer.PaintAll());

    int inside = 0;
    int outside = 0;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 120; ++x) {
            std::uint32_t pixel = 0;
            ASSERT_TRUE(viewer.GetBackingBitmap()->GetPixel(x, y, pixel));
            if ((pixel & 0xFF) < 0x80)
                ++(x >= 10 && x < 110 && y >= 5 && y < 35 ? inside : outside);
        }
    }
    EXPECT_GT(inside, 20);
    EXPECT_EQ(outside, 0);
}

} // namespace
