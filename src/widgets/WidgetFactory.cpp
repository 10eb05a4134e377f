#include "widgets/WidgetFactory.h"

#include "widgets/Brush.h"
#include "widgets/Button.h"
#include "widgets/EditableText.h"
#include "widgets/Text.h"

#include <new>

// Names are matched exactly, case and all.
bool WidgetFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget)
{
    widget.reset();
    if (sectionName == u"Brush") {
        widget.reset(new (std::nothrow) Brush(viewer));
        return true;
    }
    if (sectionName == u"Button") {
        widget.reset(new (std::nothrow) Button(viewer));
        return true;
    }
    if (sectionName == u"EditableText") {
        widget.reset(new (std::nothrow) EditableText(viewer));
        return true;
    }
    if (sectionName == u"Text") {
        widget.reset(new (std::nothrow) Text(viewer));
        return true;
    }
    return false;
}
