#pragma once

#include "base/WideString.h"

#include <string>
#include <string_view>

// A fresh folder for one test, removed with everything in it at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    // Writes a file of these bytes and returns its path.
    WideString Write(std::string_view name, std::string_view bytes) const;
    WideString PathOf(std::string_view name) const;
    WideString MakeDir(std::string_view name) const;
    // The bytes of a file in the folder; empty when there is none.
    std::string Read(std::string_view name) const;
    const std::string& Native() const { return root; }

private:
    std::string root;
};
