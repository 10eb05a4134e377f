#pragma once

#include "base/Array.h"
#include "base/WideString.h"
#include "files/ByteBlock.h"

// The version resource of a program file, read once and asked for its
// product version. A local object of the command that needs it.
class VersionInfo {
public:
    // An empty name stands for the program's own file.
    bool Load(const WideString& fileName);
    WideString GetProductVersion() const;
    bool GetVersionParts(Array<WideString>& parts) const;
    // "1, 0, 0, 1" as "1.00": the first part, a point, the next two.
    WideString GetVersionText() const;

    ByteBlock block;
    // The key of the string table to read, eight hexadecimal digits.
    WideString translation;
};
