#include "measure/MeasurePass.h"

#include "base/TextFormat.h"
#include "files/TransferMemory.h"
#include "files/UnbufferedReader.h"

#include <algorithm>
#include <cassert>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

namespace {

// Audio is read in requests of this many bytes, behind room for the part
// of a frame that the request before ended in (a frame is at most 65,535
// bytes); both are whole sectors of any volume.
constexpr std::uint32_t kReadBytes = 4 * 1024 * 1024;
constexpr std::uint32_t kHeadBytes = 64 * 1024;
constexpr std::size_t kRing = 3;
// Floats are made a few thousand frames at a time, while the bytes are
// still in the cache. Frames of many channels go fewer at a time, so that
// a header claiming 65,535 channels asks for 6 MiB of floats, not a
// gigabyte, but never fewer than twice the most priming a meter may ask
// for: a block then holds a part's priming and more. The length depends on
// the channels alone, so that a meter's blocks fall in the same places
// whatever other meters run.
constexpr std::uint32_t kMostBlockFrames = 4096;
constexpr std::uint32_t kFewestBlockFrames = 2 * kMostPrimingFrames;

struct Piece {
    std::unique_ptr<TransferMemory> memory; // kHeadBytes of room, then a request
    const std::uint8_t* bytes = nullptr;    // the first frame
    std::uint32_t frames = 0;
    bool last = false;
};

// One run of the pass. The audio is read past the system's cache in
// requests of 4 MiB, each straight into a piece of its own: as large as
// the disk wants them, and nothing copied. The requests start at the
// sector of the data chunk's body; a frame cut by the end of a request goes
// to the room in front of the next piece. A thread reads the pieces ahead
// into a ring of three, this thread and the helper measure them, and a
// long file keeps both cores and the disk busy.
class PassRun {
public:
    PassRun(const SampleFormat& format, std::vector<ChosenMeter>& meters, RawAudioSink* raw)
        : format(format), meters(meters), raw(raw)
    {
    }

    bool Open(const WideString& path, const MemoryBytes* memory, const AudioPlace& place, std::string& problem);
    void Run(const MeasureProgress& progress);
    bool Finish(std::int64_t& frames, std::string& problem);

private:
    void ReadAll();
    void HelpAll();
    void PassAllRaw();
    void MeasureOwn(const Piece& piece);
    void MeasureForTwins(const Piece& piece);
    void WaitForPiece(std::size_t index);
    void Done(std::size_t& counter, std::size_t index);
    std::uint32_t OwnFrames(const Piece& piece, std::size_t meter) const;
    template <typename Add>
    void ForEachBlock(const Piece& piece, std::uint32_t first, std::uint32_t last, std::vector<float>& floats,
                      Add add) const;

    const SampleFormat& format;
    std::vector<ChosenMeter>& meters;
    RawAudioSink* raw;
    std::vector<std::unique_ptr<Meter>> twins; // by meter; null for one that keeps all its work
    std::vector<Meter*> helpers; // by meter: its twin, or itself when the helper measures it whole; else null
    bool helped = false;
    bool takesFloats = false;
    std::uint32_t blockFrames = 0;
    UnbufferedReader audio;
    std::int64_t dataStart = 0;
    std::int64_t frameCount = 0;
    bool oneRequest = false;
    std::uint32_t requestBytes = 0;
    Piece pieces[kRing];
    std::mutex lock;
    std::condition_variable changed;
    std::size_t read = 0, summed = 0, metered = 0, passedRaw = 0;
    bool readFailed = false;   // written by the reader, read once it has been joined
    std::int64_t measured = 0; // frames this thread has been through
    std::vector<float> ownFloats, helperFloats;
};

// The audio is read through an open of its own, not the stream of the walk
// that found it: that one reads through the system's cache, this one past it.
bool PassRun::Open(const WideString& path, const MemoryBytes* memory, const AudioPlace& place, std::string& problem)
{
    if (!(memory ? audio.OpenMemory(*memory) : audio.Open(path)) || kHeadBytes % audio.GetSectorSize() != 0) {
        problem = "the audio can't be read";
        return false;
    }
    const std::uint32_t stride = format.stride;
    dataStart = place.dataPosition + 8;
    frameCount = place.frameCount;
    // Audio that one request holds is read and measured on this thread
    // alone, in the same order and with the same sums: for a short file,
    // starting threads costs more than it saves. That one request is only
    // as long as the sectors the audio lies in.
    const std::uint32_t sector = audio.GetSectorSize();
    oneRequest = dataStart % sector + frameCount * stride < kReadBytes;
    requestBytes = oneRequest
                       ? static_cast<std::uint32_t>((dataStart % sector + frameCount * stride) / sector + 1) * sector
                       : kReadBytes;
    for (std::size_t i = 0; i < (oneRequest ? 1 : kRing); ++i) {
        pieces[i].memory = std::make_unique<TransferMemory>(std::size_t{kHeadBytes} + requestBytes);
        if (!pieces[i].memory->Data()) {
            problem = "no memory to read the audio into";
            return false;
        }
    }
    // An even share pays only once the audio is longer than one request;
    // the costliest work is worth the helper on any audio that two take.
    // A meter measured whole on the helper needs no twin, and is measured
    // there on any audio that two requests take.
    twins.resize(meters.size());
    helpers.resize(meters.size());
    for (std::size_t m = 0; m < meters.size(); ++m) {
        const HelperShare share = meters[m].share;
        const bool worthIt = share == HelperShare::ThreeQuarters || frameCount * stride > kReadBytes;
        if (!oneRequest && share == HelperShare::Whole) {
            assert(meters[m].meter->Input() == MeterInput::Bytes);
            helpers[m] = meters[m].meter.get();
        } else if (!oneRequest && share != HelperShare::None && worthIt) {
            twins[m] = meters[m].meter->MakeTwin();
            helpers[m] = twins[m].get();
        }
        helped = helped || helpers[m];
        takesFloats = takesFloats || meters[m].meter->Input() == MeterInput::Floats;
        assert(meters[m].meter->PrimingFrames() <= kMostPrimingFrames);
    }
    blockFrames = std::clamp<std::uint32_t>(32768u / format.channels, kFewestBlockFrames, kMostBlockFrames);
    return true;
}

// The frames of a piece that a meter measures on this thread; its twin
// measures the rest. A piece too short to leave this thread the twin's
// priming stays whole.
std::uint32_t PassRun::OwnFrames(const Piece& piece, std::size_t meter) const
{
    if (!helpers[meter])
        return piece.frames;
    if (!twins[meter])
        return 0;
    const std::uint32_t parts = meters[meter].share == HelperShare::Half ? 2 : 4;
    return piece.frames < parts * meters[meter].meter->PrimingFrames() ? piece.frames : piece.frames / parts;
}

// Calls add with the frames [first, last) of a piece as floats, a block
// at a time, and the index of the block's first frame.
template <typename Add>
void PassRun::ForEachBlock(const Piece& piece, std::uint32_t first, std::uint32_t last, std::vector<float>& floats,
                             Add add) const
{
    floats.resize(std::size_t{std::min(blockFrames, std::max(last - first, 1u))} * format.channels);
    for (std::uint32_t done = first; done < last; done += blockFrames) {
        const std::uint32_t frames = std::min(blockFrames, last - done);
        DecodeFloats(format, piece.bytes + std::size_t{done} * format.stride, frames, floats.data());
        add(FloatFrames{floats.data(), frames, format.channels}, done);
    }
}

void PassRun::WaitForPiece(std::size_t index)
{
    std::unique_lock<std::mutex> hold(lock);
    changed.wait(hold, [&] { return read > index; });
}

void PassRun::Done(std::size_t& counter, std::size_t index)
{
    {
        std::lock_guard<std::mutex> hold(lock);
        counter = index + 1;
    }
    changed.notify_all();
}

void PassRun::ReadAll()
{
    const std::uint32_t stride = format.stride;
    std::int64_t next = dataStart - dataStart % audio.GetSectorSize();
    std::int64_t skipped = dataStart - next; // bytes of the first request before the audio
    std::int64_t carried = 0;                // bytes of a frame begun in the piece before
    std::int64_t first = 0;
    for (std::size_t i = 0;; ++i) {
        {
            std::unique_lock<std::mutex> hold(lock);
            changed.wait(hold, [&] {
                return i < std::min({summed, helped ? metered : summed, raw ? passedRaw : summed}) + kRing;
            });
        }
        Piece& piece = pieces[i % kRing];
        std::uint8_t* request = piece.memory->Data() + kHeadBytes;
        if (carried > 0) {
            const Piece& before = pieces[(i + kRing - 1) % kRing];
            std::memcpy(request - carried, before.bytes + std::size_t{before.frames} * stride,
                        static_cast<std::size_t>(carried));
        }
        const std::int64_t got = audio.ReadAt(next, request, requestBytes);
        next += requestBytes;
        piece.bytes = request + skipped - carried;
        // A failed request measures nothing of its piece; the frames
        // counted so far then fall short and the measurement is refused.
        readFailed = got < 0;
        const std::int64_t present = readFailed ? 0 : std::max<std::int64_t>(0, got - skipped) + carried;
        piece.frames = static_cast<std::uint32_t>(std::min(present / stride, frameCount - first));
        first += piece.frames;
        piece.last = readFailed || got < requestBytes || first >= frameCount;
        carried = present - std::int64_t{piece.frames} * stride;
        skipped = 0;
        Done(read, i);
        if (piece.last)
            return;
    }
}

// This thread's part of a piece: every meter's own frames, and every frame
// of what can't be shared.
void PassRun::MeasureOwn(const Piece& piece)
{
    for (std::size_t m = 0; m < meters.size(); ++m) {
        if (meters[m].meter->Input() == MeterInput::Bytes && OwnFrames(piece, m) > 0)
            meters[m].meter->AddBytes({piece.bytes, OwnFrames(piece, m), format.stride});
    }
    if (!takesFloats)
        return;
    ForEachBlock(piece, 0, piece.frames, ownFloats, [&](const FloatFrames& block, std::uint32_t at) {
        for (std::size_t m = 0; m < meters.size(); ++m) {
            Meter& meter = *meters[m].meter;
            if (meter.Input() != MeterInput::Floats)
                continue;
            const std::uint32_t own = OwnFrames(piece, m);
            if (at < own)
                meter.Add({block.samples, std::min(block.frames, own - at), block.channels});
        }
    });
    // A meter whose twin took the end of this piece goes on in the next
    // one after the last frames of this one.
    for (std::size_t m = 0; m < meters.size(); ++m) {
        Meter& meter = *meters[m].meter;
        const std::uint32_t priming = meter.PrimingFrames();
        if (!piece.last && priming > 0 && meter.Input() == MeterInput::Floats && OwnFrames(piece, m) < piece.frames)
            ForEachBlock(piece, piece.frames - priming, piece.frames, ownFloats,
                         [&](const FloatFrames& block, std::uint32_t) { meter.Prime(block); });
    }
}

// The helper's part of a piece: each twin's frames, decoded for each twin
// from its priming on, so that a meter's blocks fall where they fall
// whatever other meters run; and every frame of the meters it measures
// whole.
void PassRun::MeasureForTwins(const Piece& piece)
{
    for (std::size_t m = 0; m < meters.size(); ++m) {
        if (!helpers[m])
            continue;
        Meter& twin = *helpers[m];
        const std::uint32_t own = OwnFrames(piece, m);
        if (twin.Input() == MeterInput::Bytes) {
            twin.AddBytes({piece.bytes + std::size_t{own} * format.stride, piece.frames - own, format.stride});
            continue;
        }
        const std::uint32_t priming = own < piece.frames ? twin.PrimingFrames() : 0;
        bool primed = priming == 0;
        ForEachBlock(piece, own - priming, piece.frames, helperFloats, [&](FloatFrames block, std::uint32_t) {
            if (!primed) {
                twin.Prime({block.samples, priming, block.channels});
                block.samples += std::size_t{priming} * block.channels;
                block.frames -= priming;
                primed = true;
            }
            twin.Add(block);
        });
    }
}

void PassRun::HelpAll()
{
    for (std::size_t i = 0;; ++i) {
        WaitForPiece(i);
        const Piece& piece = pieces[i % kRing];
        MeasureForTwins(piece);
        const bool last = piece.last;
        Done(metered, i);
        if (last)
            return;
    }
}

// The raw bytes of each piece to the sink: its whole frames, on a thread
// of their own, or on this one when one request holds the audio.
void PassRun::PassAllRaw()
{
    for (std::size_t i = 0;; ++i) {
        WaitForPiece(i);
        const Piece& piece = pieces[i % kRing];
        raw->AddRaw(piece.bytes, std::size_t{piece.frames} * format.stride);
        const bool last = piece.last;
        Done(passedRaw, i);
        if (last)
            return;
    }
}

void PassRun::Run(const MeasureProgress& progress)
{
    std::thread reader;
    if (oneRequest)
        ReadAll();
    else
        reader = std::thread([this] { ReadAll(); });
    std::thread helper;
    if (helped)
        helper = std::thread([this] { HelpAll(); });
    std::thread rawPasser;
    if (raw && oneRequest)
        PassAllRaw();
    else if (raw)
        rawPasser = std::thread([this] { PassAllRaw(); });
    for (std::size_t i = 0;; ++i) {
        WaitForPiece(i);
        const Piece& piece = pieces[i % kRing];
        MeasureOwn(piece);
        measured += piece.frames;
        const bool last = piece.last;
        Done(summed, i);
        if (progress)
            progress(measured, frameCount);
        if (last)
            break;
    }
    if (reader.joinable())
        reader.join();
    if (helper.joinable())
        helper.join();
    if (rawPasser.joinable())
        rawPasser.join();
}

bool PassRun::Finish(std::int64_t& frames, std::string& problem)
{
    std::string why;
    if (readFailed)
        why = "the audio could not be read after frame " + FormatCount(measured) + " of " + FormatCount(frameCount);
    else if (measured == 0)
        why = "no audio data";
    else if (measured < frameCount)
        why = "the file ended at frame " + FormatCount(measured) + " of " + FormatCount(frameCount) +
              " while it was measured";
    if (!why.empty()) {
        problem = why;
        return false;
    }
    for (std::size_t m = 0; m < meters.size(); ++m) {
        if (twins[m])
            meters[m].meter->Merge(*twins[m]);
    }
    frames = measured;
    return true;
}

} // namespace

bool RunMeasurePass(const WideString& path, const AudioPlace& place, const SampleFormat& format,
                    std::vector<ChosenMeter>& meters, const MeasureProgress& progress, std::int64_t& frames,
                    std::string& problem, RawAudioSink* raw, const MemoryBytes* memory)
{
    PassRun run(format, meters, raw);
    if (!run.Open(path, memory, place, problem))
        return false;
    run.Run(progress);
    return run.Finish(frames, problem);
}
