#pragma once

#include "engine/InputWidget.h"

// What a pushable control knows of the mouse: hovering, the press that
// hasn't been let go yet, staying down, and toggling. A click that ends
// inside reaches the application as a command under the widget's Name.
// Not built by itself.
class Pushable : public InputWidget {
public:
    explicit Pushable(Viewer* owner) : InputWidget(owner) {}

    // Overrideables
    bool SetAttribute(const WideString& key, const WideString& value) override;
    bool Load(const AttributeMap& map) override;
    bool GetAttribute(const WideString& key, WideString& value) override;
    bool OnEvent(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                 const PointF& point) override;
    virtual bool HitTest(const PointF& point);

protected:
    WideString ToolTip;
    bool Pushed = false;
    bool Hover = false;
    bool Clicked = false;
    bool PushedAtPress = false;
    bool CheckButton = false;
};
