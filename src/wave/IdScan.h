#pragma once

#include "files/ByteBlock.h"

#include <cstdint>

class FileStream;

// Ids whose chunks do more than fail at once in a file that is not RIFF:
// RIFF, data, fmt, LIST, INFO and bext.
bool HasOwnClass(std::uint32_t id);

// The search, in a file that is not RIFF, for the next word that is an id
// of HasOwnClass, in blocks of the file rather than a word at a time. The
// document owns one for its walk and uses it on the walk's thread; its
// block stays until Release.
class IdScan {
public:
    bool FindNext(FileStream& stream, std::uint32_t& id);
    void Release() { block.Resize(0); }

private:
    ByteBlock block;
};
