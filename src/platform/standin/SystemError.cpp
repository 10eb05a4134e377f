#include "platform/SystemError.h"

// The stand-in's error codes are Windows' codes (ThreadState.h), which the
// system here cannot describe: the text names the code, with the line end
// that Windows' texts have.
namespace platform {

std::u16string SystemErrorMessage(std::uint32_t code)
{
    std::u16string message = u"System error ";
    for (char digit : std::to_string(code))
        message += static_cast<char16_t>(digit);
    message += u".\r\n";
    return message;
}

} // namespace platform
