#include "files/TransferMemory.h"

#include "platform/File.h"

TransferMemory::TransferMemory(std::size_t size)
    : memory(static_cast<std::uint8_t*>(platform::AllocateTransferMemory(size))), size(memory ? size : 0)
{
}

TransferMemory::~TransferMemory()
{
    if (memory)
        platform::FreeTransferMemory(memory, size);
}
