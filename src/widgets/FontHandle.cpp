#include "widgets/FontHandle.h"

FontHandle::~FontHandle()
{
    if (Font != nullptr)
        platform::DeleteControlFont(Font);
}
