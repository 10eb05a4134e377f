#include "support/ViewerFixture.h"

#include "engine/InputWidget.h"

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
