#include "measure/AudioMd5.h"

#include "base/TextFormat.h"
#include "files/FileStream.h"
#include "measure/AudioPlace.h"
#include "wave/FileLayout.h"

#include <vector>

void AudioMd5::AddRaw(const std::uint8_t* bytes, std::size_t count)
{
    md5.Add(bytes, count);
    added += static_cast<std::int64_t>(count);
}

bool AudioMd5::Begin(const AudioPlace& place, std::int64_t fileSize)
{
    const std::int64_t present = fileSize - (place.dataPosition + 8);
    if (place.dataBytes > present)
        Refuse("the data chunk declares " + FormatCount(place.dataBytes) + " bytes, the file holds " +
               FormatCount(std::max<std::int64_t>(0, present)) + " of them");
    return problem.empty();
}

void AudioMd5::Finish(FileLayout& layout, const AudioPlace& place)
{
    // The pass hands over whole frames; a data chunk of a size that is no
    // multiple of the frame ends in a few bytes more, read here.
    const std::int64_t rest = place.dataBytes - added;
    if (rest > 0 && rest < 65536) {
        std::vector<std::uint8_t> tail(static_cast<std::size_t>(rest));
        StreamGuard guard;
        FileStream& stream = layout.AcquireStream(guard);
        if (stream.SeekTo(place.dataPosition + 8 + added) &&
            stream.Read(tail.data(), static_cast<std::uint32_t>(rest)) == rest)
            AddRaw(tail.data(), tail.size());
    }
    if (added != place.dataBytes)
        Refuse("the audio could not be read after byte " + FormatCount(added) + " of " + FormatCount(place.dataBytes));
    else if (!md5.Finish(digest))
        Refuse("the system could not compute the MD5");
    computed = problem.empty();
}

void AudioMd5::Refuse(const std::string& why)
{
    if (problem.empty())
        problem = why;
}

bool HashAudio(FileLayout& layout, AudioMd5& md5, std::string& problem, const MeasureProgress& progress)
{
    if (!layout.IsExistingFile()) {
        problem = "no such file";
        return false;
    }
    AudioPlace place;
    if (!FindAudio(layout, place, problem))
        return false;
    if (place.dataPosition < 0) {
        problem = "no data chunk";
        return false;
    }
    // The pass reads the body as frames of one byte: every byte is whole,
    // whatever the format.
    SampleFormat bytes;
    bytes.channels = 1;
    bytes.bytesPerSample = 1;
    bytes.bits = 8;
    bytes.stride = 1;
    bytes.kind = SampleKind::Unsigned8;
    place.frameCount = place.dataBytes;
    std::vector<ChosenMeter> noMeters;
    std::int64_t frames = 0;
    // The pass counts frames; here they are bytes, and said so.
    if (md5.Begin(place, layout.GetFileSize()) && place.dataBytes > 0 &&
        !RunMeasurePass(layout.GetPath(), place, bytes, noMeters, progress, frames, problem, &md5,
                        layout.GetMemory())) {
        problem = "the audio could not be read after byte " + FormatCount(md5.Hashed()) + " of " +
                  FormatCount(place.dataBytes);
        return false;
    }
    md5.Finish(layout, place);
    problem = md5.GetProblem();
    return md5.IsComputed();
}
