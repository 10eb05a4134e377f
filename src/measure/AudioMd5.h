#pragma once

#include "measure/MeasurePass.h"
#include "platform/Md5.h"

#include <cstdint>
#include <string>

class FileLayout;
struct AudioPlace;

// The MD5 of a file's audio: every byte of its data chunk's body, a last
// partial frame included, its pad byte not. The measuring pass feeds it the
// whole frames on a thread of its own; the rest is made and read on the
// caller's thread. A data chunk that runs past the end of the file has no
// MD5: what is there can never match what the chunk was, so it is refused,
// as a measurement is.
class AudioMd5 : public RawAudioSink {
public:
    void AddRaw(const std::uint8_t* bytes, std::size_t count) override;

    // Before a pass: false, and the MD5 refused, when the data chunk of
    // place runs past the end of the file.
    bool Begin(const AudioPlace& place, std::int64_t fileSize);
    // After a pass that read the whole frames of place: hashes the bytes
    // behind the last of them and finishes.
    void Finish(FileLayout& layout, const AudioPlace& place);
    void Refuse(const std::string& why);

    // The bytes hashed so far.
    std::int64_t Hashed() const { return added; }
    bool IsComputed() const { return computed; }
    const platform::Md5Digest& GetDigest() const { return digest; }
    // Why there is no MD5, once refused.
    const std::string& GetProblem() const { return problem; }

private:
    platform::Md5 md5;
    std::int64_t added = 0;
    bool computed = false;
    platform::Md5Digest digest{};
    std::string problem;
};

// The MD5 of the audio alone, read as the levels read it but with no meter:
// false with the reason in problem when it can't be computed.
bool HashAudio(FileLayout& layout, AudioMd5& md5, std::string& problem, const MeasureProgress& progress = {});
