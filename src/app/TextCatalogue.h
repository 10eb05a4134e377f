#pragma once

#include "base/WideString.h"
#include "layouttext/LayoutDocument.h"
#include "platform/RecursiveLock.h"

// The English texts of the failure box, looked up by the text itself in the
// section Text of one process-wide document. Made at first use, on any
// thread, and destroyed at process exit; a lock of its own guards it.
class TextCatalogue {
public:
    static WideString Lookup(const WideString& key);

    // The lookup itself, in any document.
    static WideString LookupIn(const LayoutDocument& document, const WideString& key);

private:
    TextCatalogue() = default;

    static TextCatalogue& Instance();

    platform::RecursiveLock lock;
    LayoutDocument document;
};
