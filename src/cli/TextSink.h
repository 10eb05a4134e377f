#pragma once

#include <string_view>

// Where a listing goes, piece by piece as it is made, so that a long one
// needs no memory for all of it.
class TextSink {
public:
    virtual ~TextSink() = default;
    virtual void Put(std::string_view text) = 0;
    // Sends on what is held, for a reader that waits for each piece.
    virtual void Flush() {}
};
