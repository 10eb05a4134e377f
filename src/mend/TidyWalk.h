#pragma once

#include "files/FileStream.h"
#include "mend/CopyWriter.h"
#include "mend/TidyPlan.h"

#include <cstdint>
#include <string>
#include <vector>

// One pass of a tidy copy, written as the input's chunks are walked: the
// RIFF header, then each chunk as it stands with its size mended, from the
// first chunk behind the form type to the end of the file, whatever the
// RIFF size says. Memory doesn't grow with the number of chunks. Made for
// one pass, on the thread of the copy.
class TidyWalk {
public:
    // A dry run reads the input but writes nothing: it tells the size of
    // the copy, so that a copy that would pass 4 GiB is written as RF64.
    enum class Run { Dry, Riff, Rf64 };

    TidyWalk(FileStream& input, FileStream& target, std::int64_t fileSize, const TidyPlan& plan,
             std::vector<std::string>& changes, std::string& problem, Run run);

    // The size of what was written, or would have been.
    std::int64_t Written() const { return writer.Written(); }

    bool Copy();

private:
    bool ReadHead();
    bool WriteHead();
    bool CopyChunks();
    bool CopyPlaceholderData(std::int64_t position, std::int64_t declared);
    bool WriteChunk(std::uint32_t id, std::int64_t body, std::int64_t size);
    bool StoreMd5();
    bool FinishSizes();

    bool Failed();
    bool Refuse(const std::string& why);

    FileStream& input;
    std::int64_t fileSize;
    const TidyPlan& plan;
    std::vector<std::string>& changes;
    std::string& problem;
    Run run;
    CopyWriter writer;

    // The input's head, as ReadHead finds it.
    std::uint8_t riff[12] = {};
    bool fromRf64 = false;
    std::uint32_t riffSize = 0;    // the size field as it stands
    std::int64_t declaredRiff = 0; // ds64's in an RF64 file
    std::int64_t firstChunk = kRiffHeaderBytes;
    bool md5Replaced = false; // the input's MD5 chunk was left out for the copy's own
};
