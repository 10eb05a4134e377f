#pragma once

class Chunk;
class RootChunk;

// Told of a walk's chunks as they are read, in file order, whatever the
// document keeps of them. A RIFF chunk is opened once its header is read,
// and closed when its read ends: its children come in between.
class ChunkObserver {
public:
    virtual ~ChunkObserver() = default;

    virtual void RiffOpened(const RootChunk& chunk) = 0;
    // read is false when the RIFF chunk failed, and a parent then drops it.
    virtual void RiffClosed(const RootChunk& chunk, bool read) = 0;
    // A chunk that stays where it was read: every top-level chunk, and
    // each child of a RIFF chunk that read well.
    virtual void Kept(const Chunk& chunk) = 0;
};
