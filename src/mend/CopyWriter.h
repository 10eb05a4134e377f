#pragma once

#include "files/FileStream.h"
#include "platform/Md5.h"

#include <cstdint>
#include <optional>
#include <vector>

// The bytes of a tidy copy as they go out: the head, RIFF or RF64 with its
// ds64 chunk, chunks copied from the input with their sizes given anew,
// and at the end the sizes that are known only then. A dry writer writes
// nothing and only counts, so that the size of a copy is known before it
// is written. Owned by the walk of one copy, on its thread.
class CopyWriter {
public:
    enum class Output { Dry, Written };

    CopyWriter(FileStream& input, FileStream& target, Output output);

    // The size of what was written, or would have been.
    std::int64_t Written() const { return written; }
    // True once the head written was RF64's.
    bool IsRf64() const { return ds64At >= 0; }

    bool StartRiff(const std::uint8_t* riffHeader);
    bool StartRf64(const std::uint8_t* formType, std::optional<std::uint32_t> inputDs64Size);
    bool WriteChunk(std::uint32_t id, std::int64_t body, std::int64_t size);
    bool CopyBytes(std::int64_t from, std::int64_t count);
    // The MD5 of the first data chunk's body as it is copied, when asked
    // for before it is; its digest, once it was copied, goes in an MD5
    // chunk of 16 bytes. A dry writer only counts the chunk.
    void HashData() { dataMd5.emplace(); }
    bool WriteMd5Chunk(platform::Md5Digest& digest);
    bool FinishRiff(std::uint32_t riffSize);
    bool FinishRf64(std::int64_t riffSize, std::uint32_t blockAlign);

private:
    bool Put(const void* bytes, std::uint32_t count);
    bool PatchAt(std::int64_t position, const std::uint8_t* bytes, std::uint32_t count);

    FileStream& input;
    FileStream& target;
    Output output;
    std::vector<std::uint8_t> buffer;
    std::int64_t written = 0;
    std::int64_t ds64At = -1;   // where the ds64 sizes stand in an RF64 copy
    std::int64_t dataBytes = 0; // the audio written
    std::optional<platform::Md5> dataMd5;
    bool hashing = false;     // while the first data chunk is copied
    bool dataHashed = false;
};
