// The policy reader on arbitrary text: TOML, then the policy's own keys,
// measures and limits. A text is a policy or a message that names where
// it went wrong, and never anything else.
#include "policy/Policy.h"

#include "FuzzInput.h"

#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Policy policy;
    std::string problem;
    if (ParsePolicy(text, "fuzz.toml", policy, problem)) {
        if (!problem.empty())
            FailInvariant("a policy read well comes with a problem");
        policy.Depth();
    } else if (problem.rfind("fuzz.toml", 0) != 0) {
        FailInvariant("a policy's problem does not name its file");
    }
    return 0;
}
