#pragma once

#include "check/TextSink.h"

#include <string>
#include <string_view>

// Text whose lines end in LF, with the given line end instead.
std::string WithLineEnd(std::string_view text, const char* lineEnd);

// Standard output in pieces of some size. Text takes the platform's line
// end; JSON and CSV keep the bytes they are given.
class ConsoleSink : public TextSink {
public:
    enum class Bytes { Text, Exact };
    explicit ConsoleSink(Bytes bytes) : bytes(bytes) {}
    ~ConsoleSink() override { Flush(); }

    void Put(std::string_view text) override;
    void Flush();

private:
    Bytes bytes;
    std::string pending;
};

// A sink that keeps what it is given, for tests and for text made whole.
class StringSink : public TextSink {
public:
    void Put(std::string_view text) override { bytes += text; }
    std::string bytes;
};
