#pragma once

#include "platform/Window.h"

#include <string_view>

// Supplied by the windowed program; the platform's entry shim calls it with
// the four values a windowed program starts with. The result is the
// process's exit code.
int ProgramMain(platform::InstanceHandle instance, platform::InstanceHandle previousInstance,
                std::u16string_view commandLine, int showCommand);
