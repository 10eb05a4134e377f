#pragma once

#include "base/WideString.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

class FolderWalk;

// One path of a run: a file to check, or a path that can't be checked at
// all, with the code of why (a folder that can't be read, a link loop, a
// link to nothing).
struct SourcePath {
    WideString path;
    std::string unreadable;
};

struct SourceOptions {
    // Standard input holds paths each ended by a zero byte (find -print0)
    // rather than by a line end.
    bool nulSeparated = false;
};

// The paths that the FILE arguments of the checker name, in order:
//   - a folder: every file below it whose name ends in ".wav" in any case,
//     in the order of FolderWalk;
//   - "-": the paths on standard input, one a line (empty lines skipped;
//     a byte order mark before the first is no part of it);
//   - a pattern with * or ? on a system whose shell leaves those to the
//     program (Windows), the paths that match, sorted likewise;
//   - anything else: the path itself, whatever it names.
// A folder's path is continued with the separator it is written in, the
// system's own when it has none.
//
// The paths are found as they are asked for, standard input read and
// folders walked as the run goes, so that a run of millions of files holds
// only the folders on its way down. Used by one thread at a time; the run's
// threads take turns at it under a lock of theirs.
class FileSources {
public:
    FileSources(std::vector<WideString> arguments, const SourceOptions& options);
    ~FileSources();
    FileSources(const FileSources&) = delete;
    FileSources& operator=(const FileSources&) = delete;

    bool Next(SourcePath& path);
    // True once the path that Next gave last is the last of all.
    bool SeenEnd() const { return ended && ahead.empty(); }
    std::size_t LookAhead(std::size_t count);

    // A folder or standard input that yielded no path at all, and standard
    // input that failed before its end, a line each, once the walk has
    // passed them: a run over nothing never looks like a run over sound
    // files.
    const std::vector<std::string>& NothingFound() const { return nothingFound; }

private:
    class InputLines;
    enum class Walking { Nothing, StandardInput, Pattern, Path };

    bool Advance();
    void StartArgument(const std::u16string& text);
    void StartPath(const std::u16string& path);
    void Give(SourcePath path);
    void EndArgument();

    std::vector<WideString> arguments;
    SourceOptions options;
    std::size_t nextArgument = 0;
    bool ended = false;
    std::deque<SourcePath> ahead;
    std::vector<std::string> nothingFound;

    // The argument being walked: standard input's lines, a pattern's
    // matches, and within any of them a folder's walk.
    Walking walking = Walking::Nothing;
    std::unique_ptr<InputLines> input;
    std::vector<std::u16string> matches;
    std::size_t nextMatch = 0;
    std::unique_ptr<FolderWalk> folder;
    std::u16string argument;
    std::size_t given = 0; // paths given for the argument
};
