#pragma once

#include "cli/TextSink.h"

#include <string>
#include <string_view>

// Text whose lines end in LF, with the given line end instead.
std::string WithLineEnd(std::string_view text, const char* lineEnd);

// Standard output in pieces of some size. Text takes the platform's line
// end; JSON and CSV keep the bytes they are given. A write that fails ends
// the program with status 1, with a message on standard error unless the
// reader has gone: a result half written must never look like a whole one.
class ConsoleSink : public TextSink {
public:
    enum class Bytes { Text, Exact };
    explicit ConsoleSink(Bytes bytes) : bytes(bytes) {}
    ~ConsoleSink() override { Flush(); }

    void Put(std::string_view text) override;
    void Flush() override;

private:
    Bytes bytes;
    std::string pending;
};

// Writes bytes to standard output at once, ending the program as the sink
// does when they can't all be written.
void WriteWholeToStandardOutput(std::string_view bytes);

// A sink that keeps what it is given, for tests and for text made whole.
class StringSink : public TextSink {
public:
    void Put(std::string_view text) override { bytes += text; }
    std::string bytes;
};
