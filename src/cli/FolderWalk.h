#pragma once

#include "platform/Folder.h"

#include <cstddef>
#include <string>
#include <vector>

struct SourcePath;

// The .wav files below one folder, depth first, the entries of each folder
// in the order of their names' UTF-16 units, so that every run and every
// build lists the same files in the same order. Paths are found as they
// are asked for: the walk holds only the folders on its way down, each
// with those of its entries that can give a path, so its memory follows
// the depth of the tree and its largest folder, never the number of files.
// Used by one thread at a time.
class FolderWalk {
public:
    // A folder's path is continued with separator, unless it ends in one.
    FolderWalk(std::u16string folder, char16_t separator);

    bool Next(SourcePath& path);

private:
    // A folder on the way down: its entries, sorted, and the next to visit.
    struct Level {
        platform::FolderIdentity identity;
        std::u16string prefix;
        std::vector<platform::FolderEntry> entries;
        std::size_t next = 0;
    };

    bool Enter(const std::u16string& folder, SourcePath& instead);

    std::vector<Level> levels;
    std::u16string first; // the folder the walk begins with
    bool started = false;
    char16_t separator;
};
