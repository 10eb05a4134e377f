#pragma once

#include "check/FileCheck.h"
#include "measure/AudioPlace.h"
#include "measure/LevelReport.h"

#include <string>

class FileLayout;

// What a policy's measures are read from for one file: its check, its
// format chunk and, when a rule needs the audio, its levels and loudness.
// Made on a checking thread; read by the thread that judges.
struct FileFacts {
    bool hasPlace = false;
    bool rf64 = false;
    AudioPlace place;
    bool measured = false;
    LevelReport levels;
    std::string problem; // why the audio could not be measured
};

// How much of the file a policy needs.
enum class FactDepth { Header, Levels, Loudness };

// Reads the header facts of the file from its layout (read with its RF64
// layout after the walk), and its audio to the depth asked.
void GatherFacts(FileLayout& layout, FactDepth depth, FileFacts& facts);
