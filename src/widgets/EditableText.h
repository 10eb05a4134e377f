#pragma once

#include "widgets/Frame.h"
#include "widgets/Text.h"
#include "widgets/TextBox.h"

#include <cstdint>

// A text field: drawn text most of the time, and a live edit control laid
// over the same rectangle from a click until the editing ends. It holds
// its drawn text, its box and its edge by value; they aren't in the
// Viewer's widget list, though the box takes input right behind it. Main
// window's thread only.
class EditableText : public WindowWidget {
public:
    explicit EditableText(Viewer* owner);

    // Overrideables
    bool SetAttribute(const WideString& key, const WideString& value) override;
    bool Draw(platform::Graphics& graphics, const RectF& bounds) override;
    bool Load(const AttributeMap& map) override;
    bool GetAttribute(const WideString& key, WideString& value) override;
    bool OnEvent(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                 const PointF& point) override;
    void SyncWindow() override;

    // Editing
    bool BeginEdit();
    bool EndEdit();
    bool IsEditing() const { return Box.IsVisible(); }

    // The bits of EditFlags.
    static constexpr std::uint32_t kBackColorWhite = 1;
    static constexpr std::uint32_t kEdge = 2;
    static constexpr std::uint32_t kNumber = 4;

private:
    // Whether window is this field's live control.
    bool IsControl(platform::WindowHandle window) const;
    // A click inside: editing begins, and the caret goes where the mouse is
    // or the whole text is selected.
    void PressInside();

    Text Display;
    TextBox Box;
    Frame Edge;
    std::uint32_t EditFlags = 0;
    bool Password = false;
    bool SelectAll = false;
    bool Return = false;
};
