#pragma once

#include "base/WideString.h"

// The face of the font that the user's desktop gives its icons, which
// widgets take when their layout names no font. Empty when the system
// doesn't tell.
WideString GetIconFontName();
