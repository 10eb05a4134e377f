#pragma once

#include "base/WideString.h"
#include "platform/ToolTipControl.h"
#include "platform/Window.h"

class PositionedWidget;
class ViewerBase;

// The one tracking tooltip of the process: a widget under the mouse shows
// its text 8 pixels below its lower left corner, and takes it down again
// when the mouse leaves. The native tip is made for one host window at a
// time and stays after hiding, to be shown again. Main window's thread
// only.
class ToolTipWindow {
public:
    // The tip of the process.
    static ToolTipWindow& Instance();

    // Shows text for widget on viewer's host window, or with an empty text
    // takes the tip down when widget owns it. False only for a null widget.
    bool Show(ViewerBase& viewer, const WideString& text, PositionedWidget* widget);
    // True when the text changed.
    bool SetText(const WideString& text);
    // Destroys the native tip; the next Show makes a new one.
    void Destroy();
    // Whether the native tip exists and was made for a window other than
    // host.
    bool BelongsToOtherHost(platform::WindowHandle host) const;

private:
    // Compared only, never followed.
    const PositionedWidget* Target = nullptr;
    platform::WindowHandle OwnerWindow = nullptr;
    platform::WindowHandle TipWindow = nullptr;
    platform::ToolTipTool ToolInfo{platform::kToolTipSubclass | platform::kToolTipTrack | platform::kToolTipAbsolute};
    WideString Text;
};
