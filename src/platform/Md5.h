#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

// The MD5 of a stream of bytes, through the system's own cryptography:
// fed piece by piece, then finished once. Made, fed and finished on one
// thread at a time; not copied.
namespace platform {

using Md5Digest = std::array<std::uint8_t, 16>;

class Md5 {
public:
    Md5();
    ~Md5();
    Md5(const Md5&) = delete;
    Md5& operator=(const Md5&) = delete;

    // False once the system has failed the hash: it then stays failed.
    bool Add(const std::uint8_t* bytes, std::size_t count);
    // The digest of every byte added; false when the system failed.
    bool Finish(Md5Digest& digest);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace platform
