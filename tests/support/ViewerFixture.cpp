#include "support/ViewerFixture.h"

#include "engine/InputWidget.h"

#include <cstdio>

std::string Describe(const RectF& r)
{
    char text[96];
    std::snprintf(text, sizeof text, "%g,%g,%g,%g", r.x, r.y, r.width, r.height);
    return text;
}

std::u16string Get(Widget& widget, const char16_t* key)
{
    WideString value;
    return widget.GetAttribute(key, value) ? value.ToU16String() : u"<unknown>";
}

bool TestWidgetFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget)
{
    if (sectionName == u"Plain")
        widget = std::make_unique<PositionedWidget>(viewer);
    else if (sectionName == u"Input")
        widget = std::make_unique<InputWidget>(viewer);
    else
        return false;
    return true;
}
