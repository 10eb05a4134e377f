#pragma once

#include "base/WideString.h"
#include "engine/Widget.h"

#include <memory>

class Viewer;

// Makes the widget that a section of this name describes, owned by viewer.
// False for a name that builds nothing; true with a null widget when there
// was no memory for it.
bool WidgetFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget);
