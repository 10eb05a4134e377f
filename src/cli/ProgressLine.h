#pragma once

#include <chrono>
#include <string>

// A line of progress on standard error ("checked 1,234 of 10,000 files",
// "measuring PATH: 42%"), rewritten in place, once the work has taken a
// second and at most ten times a second after; only where a person watches
// the terminal. Results written to the same terminal go between a Hide and
// the next Update, which draws the line again at once, so that no line of
// theirs runs into it. The line is cleared when the object goes.
class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Draws the text that make() gives, when it is due; make is not called
    // when nobody would see it.
    template <typename Make>
    void Update(Make make)
    {
        if (shown && Due())
            Draw(make());
    }
    void Hide();

private:
    bool Due() const;
    void Draw(const std::string& text);

    bool shown;
    bool drawn = false;
    bool hidden = false; // cleared for results, to be drawn again
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last;
};
