#pragma once

#include "base/WideString.h"

// What the check asks of a path before it opens it.

// True when path names a file, not a folder.
bool IsExistingFile(const WideString& path);
