#pragma once

#include "platform/ProgramEntry.h"

// The start and end of the windowed program. ProgramMain (declared with the
// platform's entry) initialises COM and the common controls around the
// message loop registry and calls RunProgram, which starts GDI+, makes the
// loop and the main dialog, shows the window and pumps until it closes.
// Both run on the main thread and give the process's exit code: 2 after a
// normal close, 0 when the window could not be made.
int RunProgram(int showCommand);
