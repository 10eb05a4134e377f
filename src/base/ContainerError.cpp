#include "base/ContainerError.h"

void ThrowContainerError(std::uint32_t resultCode)
{
    throw ContainerError{resultCode};
}
