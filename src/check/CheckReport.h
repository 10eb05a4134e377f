#pragma once

#include "base/WideString.h"

// The text of a check: Japanese lines, each ending in CR LF.
using CheckReport = WideString;
