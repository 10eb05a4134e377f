#include "mend/KeptMarks.h"

#include "base/TextFormat.h"
#include "files/FileStream.h"
#include "platform/File.h"
#include "wave/CuePoints.h"
#include "wave/MetadataScan.h"
#include "wave/SamplerFields.h"

void SayMarksPastAudio(const WideString& path, std::vector<std::string>& changes)
{
    FileStream stream;
    MetadataScan scan;
    if (!stream.OpenPlain(path, platform::kFileAttributeNormal) ||
        ScanMetadata(stream, stream.GetSize(), scan) != MetadataScanResult::Scanned || !scan.frameCount)
        return;
    const std::int64_t frames = *scan.frameCount;
    const std::string kept = ", past the " + FormatCount(frames) + " frames of audio kept";
    for (const MetadataChunk& chunk : scan.chunks) {
        if (chunk.id == "cue ") {
            for (const CuePoint& point : ReadCuePoints(chunk.body)) {
                if (point.sampleOffset >= frames)
                    changes.push_back("cue point " + std::to_string(point.id) + " at frame " +
                                      FormatCount(point.sampleOffset) + kept);
            }
        } else if (chunk.id == "smpl") {
            for (const SamplerLoop& loop : ReadSamplerFields(chunk.body).loops) {
                if (loop.end >= frames)
                    changes.push_back("smpl loop " + std::to_string(loop.cuePointId) + " ends at frame " +
                                      FormatCount(loop.end) + kept);
            }
        }
    }
}
