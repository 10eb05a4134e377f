#pragma once

#include "base/WideString.h"
#include "files/MemoryBytes.h"
#include "measure/AudioPlace.h"
#include "measure/Meter.h"
#include "measure/SampleFormat.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// How much of each piece of audio a meter's twin measures on the helper
// thread. The pass reads pieces of 4 MiB; a file that one read holds is
// measured on the calling thread alone, and no twin is made.
enum class HelperShare {
    None,          // every frame on the calling thread
    Half,          // the second half of each piece, once the audio is longer than one read
    ThreeQuarters, // the last three quarters: for the costliest work, beside meters that can't share theirs
    Whole,         // every frame on the helper thread, in order: a meter of raw bytes whose work can't be split
};

// A meter as it is chosen for a pass.
struct ChosenMeter {
    std::unique_ptr<Meter> meter;
    HelperShare share = HelperShare::None;
};

// Frames measured so far and the frames in all, after each piece, on the
// thread that runs the pass.
using MeasureProgress = std::function<void(std::int64_t framesDone, std::int64_t frameCount)>;

// Takes the bytes of the audio's whole frames as the pass reads them, in
// file order, on a thread of its own beside the meters: the hash of the
// audio, which then costs no time of theirs. Made and read by the caller.
class RawAudioSink {
public:
    virtual ~RawAudioSink() = default;
    virtual void AddRaw(const std::uint8_t* bytes, std::size_t count) = 0;
};

// Reads the frames of the audio at path once, past the system's cache, and
// hands them to every meter: raw, or decoded to floats once for all that take
// floats. A thread reads the pieces ahead; twins of the meters that share
// their work run on a helper thread; the calling thread measures the rest
// and, once every frame is in, merges each twin into its meter. False with
// the reason in problem when the audio can't be read, or ends before the
// frames counted in place: a measurement is of every frame or none. raw,
// when given, is handed every frame's bytes too. memory, when given, holds
// the file's bytes, and the pieces are read from it rather than from path.
bool RunMeasurePass(const WideString& path, const AudioPlace& place, const SampleFormat& format,
                    std::vector<ChosenMeter>& meters, const MeasureProgress& progress, std::int64_t& frames,
                    std::string& problem, RawAudioSink* raw = nullptr, const MemoryBytes* memory = nullptr);
