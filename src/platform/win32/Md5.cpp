#include "platform/Md5.h"

#include <windows.h>

#include <bcrypt.h>

#include <algorithm>
#include <limits>

namespace platform {

// The system's cryptography API (CNG). The algorithm provider is opened
// for each hash: that costs little beside hashing a file's audio, and no
// provider is shared between threads.
struct Md5::State {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
    bool ok = false;
};

Md5::Md5() : state(new State)
{
    state->ok = BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&state->algorithm, BCRYPT_MD5_ALGORITHM, nullptr, 0)) &&
                BCRYPT_SUCCESS(BCryptCreateHash(state->algorithm, &state->hash, nullptr, 0, nullptr, 0, 0));
}

Md5::~Md5()
{
    if (state->hash)
        BCryptDestroyHash(state->hash);
    if (state->algorithm)
        BCryptCloseAlgorithmProvider(state->algorithm, 0);
}

bool Md5::Add(const std::uint8_t* bytes, std::size_t count)
{
    // BCryptHashData takes a 32-bit count.
    while (state->ok && count > 0) {
        const ULONG part = static_cast<ULONG>(std::min<std::size_t>(count, std::numeric_limits<ULONG>::max()));
        state->ok = BCRYPT_SUCCESS(BCryptHashData(state->hash, const_cast<PUCHAR>(bytes), part, 0));
        bytes += part;
        count -= part;
    }
    return state->ok;
}

bool Md5::Finish(Md5Digest& digest)
{
    state->ok = state->ok && BCRYPT_SUCCESS(BCryptFinishHash(state->hash, digest.data(), digest.size(), 0));
    return state->ok;
}

} // namespace platform
