#include "policy/FileFacts.h"

#include "measure/Levels.h"
#include "wave/FileLayout.h"

// A file whose header can't be read leaves hasPlace false, and then its
// audio is not read either: every measure of it is missing.
void GatherFacts(FileLayout& layout, FactDepth depth, FileFacts& facts)
{
    facts.hasPlace = FindAudio(layout, facts.place, facts.problem);
    facts.rf64 = facts.hasPlace && layout.GetContainer() == FileContainer::Rf64;
    if (facts.hasPlace && depth != FactDepth::Header)
        facts.measured = MeasureLevels(layout, facts.levels, facts.problem, depth == FactDepth::Loudness);
}
