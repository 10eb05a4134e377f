#pragma once

// The facts of the program's resources, in one place for the resource
// compiler (which reads only the preprocessor's part of C) and for the code
// that makes the main dialog or stands in for the resources in tests.

// The main dialog's template: its id, caption and size in dialog units.
#define SONDARA_MAIN_DIALOG_ID 129
#define SONDARA_MAIN_DIALOG_CAPTION "Sondara"
#define SONDARA_MAIN_DIALOG_WIDTH 241
#define SONDARA_MAIN_DIALOG_HEIGHT 145

// The version of the programs, made by the build from the project's version:
// SONDARA_VERSION_NUMBERS (1, 0, 0, 1), SONDARA_VERSION_TEXT, the text of the
// version block ("1, 0, 0, 1"), and SONDARA_VERSION_DOTTED ("1.0.0.1").
#include "platform/ProgramVersion.h"
