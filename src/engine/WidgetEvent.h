#pragma once

#include "base/WideString.h"

#include <cstdint>

// The one record that travels from widgets to the application: what
// happened, to which widget, under which command name.
// What happened, by the event's Code.
namespace EventCode {
constexpr std::uint32_t kCommand = 1;
constexpr std::uint32_t kEditFinished = 2;
constexpr std::uint32_t kTakeCapture = 4;
constexpr std::uint32_t kReleaseCapture = 5;
constexpr std::uint32_t kTakeFocus = 6;
constexpr std::uint32_t kGiveUpFocus = 7;
constexpr std::uint32_t kMouseEntered = 10;
constexpr std::uint32_t kMouseLeft = 11;
} // namespace EventCode

struct WidgetEvent {
    WideString Name;
    WideString Id;
    std::uint32_t Code = 0;
    WideString Text;
};
