#pragma once

#include "base/WideString.h"

#include <cstdint>

// The one record that travels from widgets to the application: what
// happened, to which widget, under which command name.
struct WidgetEvent {
    WideString Name;
    WideString Id;
    std::uint32_t Code = 0;
    WideString Text;
};
