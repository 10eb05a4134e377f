#include "widgets/WidgetFactory.h"

#include "widgets/Brush.h"

#include <new>

// Names are matched exactly, case and all.
bool WidgetFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget)
{
    widget.reset();
    if (sectionName == u"Brush") {
        widget.reset(new (std::nothrow) Brush(viewer));
        return true;
    }
    return false;
}
