#pragma once

#include "base/Array.h"
#include "base/WideString.h"
#include "platform/Window.h"

// The two ways out of the program to the maker's web site: the search for
// a line of the report, and the release note of the running version. Both
// hand an address to the shell and look no further.

// Hands url to the shell's "open" with owner; false for a dead owner or
// when the shell couldn't. Each "&" goes as "%26", the only escaping.
bool OpenUrl(platform::WindowHandle owner, const WideString& url);

// Opens url owned by the desktop, with the desktop disabled around it, so
// the dialog itself stays enabled.
void OpenAddress(const WideString& url);

// The lines of a report, without the line breaks; runs of CR and LF give
// no empty lines.
Array<WideString> ReportLines(const WideString& report);

// The addresses: the search with one report line, and the release note of
// the version text with its points taken out.
WideString SearchAddress(const WideString& line);
WideString ReleaseNoteAddress(const WideString& versionText);

// Disables a window for the length of a scope, and enables it again only
// when it was enabled before; the desktop is never disabled.
class WindowDisabler {
public:
    explicit WindowDisabler(platform::WindowHandle window);
    ~WindowDisabler();
    WindowDisabler(const WindowDisabler&) = delete;
    WindowDisabler& operator=(const WindowDisabler&) = delete;

private:
    platform::WindowHandle window;
    bool reenable = false;
};
