#pragma once

#include "engine/InputWidget.h"

#include <cstdint>
#include <memory>

class EditSubclass;
class FontHandle;

// The inner half of an EditableText: the widget that stands for the native
// edit control while somebody types, and holds the text while there is no
// control. It makes the control over its rectangle when it is visible and
// in the group on show, and ends it otherwise; it draws nothing. Held by
// value by its EditableText, never by the Viewer's list; main window's
// thread only.
class TextBox : public WindowWidget {
public:
    explicit TextBox(Viewer* owner);
    ~TextBox() override;

    // Overrideables
    bool SetAttribute(const WideString& key, const WideString& value) override;
    bool Draw(platform::Graphics& graphics, const RectF& bounds) override;
    bool Load(const AttributeMap& map) override;
    bool GetAttribute(const WideString& key, WideString& value) override;
    bool OnEvent(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                 const PointF& point) override;
    void SyncWindow() override;

    // The native control
    bool CreateNativeWindow();
    bool DestroyNativeWindow(bool destroyWindow);
    bool SetNativeFont(std::int32_t tenths, const WideString& faceName);
    // The control, or null when there is none alive.
    platform::WindowHandle GetNativeWindow() const;

    // Text and selection
    bool SetNativeText(const WideString& text);
    WideString GetNativeText() const;
    void SelectRange(std::int32_t start, std::int32_t end);
    bool IsNumberText() const;

    // For the owning EditableText
    bool SetAlign(std::int32_t align);
    void SetVisible(bool visible) { Visible = visible; }
    void SetTabStop(bool tabStop) { TabStop = tabStop; }

private:
    // The style of a new control, from the flags and the alignment.
    std::uint32_t NativeStyle() const;

    std::unique_ptr<EditSubclass> Subclass;
    platform::WindowHandle Window = nullptr;
    WideString KeptText;
    std::unique_ptr<FontHandle> Font;
    std::int32_t Align = 0;
    bool MultiLine = false;
    bool ScrollLast = false;
    bool VScroll = false;
    bool ReadOnly = false;
    bool Password = false;
};
