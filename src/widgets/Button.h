#pragma once

#include "base/Array.h"
#include "widgets/Frame.h"
#include "widgets/Pushable.h"
#include "widgets/Text.h"

#include <cstdint>

// The pushable control of the engine: a coloured face with the outline of
// its edge, a caption and a shaded edge, in four looks (normal, pushed,
// hover, disabled). It holds its caption and its edge by value; they
// aren't in the Viewer's lists.
class Button : public Pushable {
public:
    explicit Button(Viewer* owner);

    // Overrideables
    bool SetAttribute(const WideString& key, const WideString& value) override;
    bool Draw(platform::Graphics& graphics, const RectF& bounds) override;
    bool Load(const AttributeMap& map) override;
    bool GetAttribute(const WideString& key, WideString& value) override;

    // The look numbers, which also index the face colours.
    enum Look { kNormal = 0, kPushed = 1, kHover = 2, kDisabled = 3 };
    Look GetLook() const;
    std::uint32_t FaceColorOf(Look look) const;

private:
    // Makes the face colours from a comma list; false when the text is the
    // one they were made from.
    bool ParseFaceColor(const WideString& text);

    Text Caption;
    Frame Edge;
    std::uint32_t TextColor = 0xFF000000;
    Array<std::uint32_t> FaceColors;
    WideString FaceColor;
    bool HasEdge = false;
};
