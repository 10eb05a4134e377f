#pragma once

#include "base/Array.h"
#include "base/RectF.h"
#include "base/WideString.h"

class AttributeMap;

namespace platform {
class Graphics;
}

// Everything the window shows: a flat object with a name, an id, groups,
// eight position texts and three flags, made from one section of a layout
// text and from then on read and changed by key. The Viewer owns every
// widget; all of it runs on the thread of the main window.
class Widget {
public:
    Widget() = default;
    Widget(const Widget&) = delete;
    Widget& operator=(const Widget&) = delete;

    // Overrideables
    virtual bool SetAttribute(const WideString& key, const WideString& value);
    virtual ~Widget() = default;
    virtual bool Draw(platform::Graphics& graphics, const RectF& bounds);
    virtual bool Load(const AttributeMap& map);
    virtual WideString ResolveRelative(int index, const WideString& value) = 0;
    virtual RectF GetInsetRect(float dLeft, float dTop, float dRight, float dBottom) = 0;
    virtual RectF GetRect() = 0;
    virtual bool GetAttribute(const WideString& key, WideString& value);
    virtual bool SaveToText(WideString& text, WideString& options, bool skip);
    virtual float EvalX(const WideString& text) = 0;
    virtual float EvalY(const WideString& text) = 0;
    virtual bool IsOpaque();

    // Operations
    WideString GetName() const { return Name; }
    WideString GetId() const;
    bool IsInGroup(const WideString& group) const;
    bool SetBoolAttribute(const WideString& key, bool flag);
    bool SetBounds(const RectF& rect);

    bool IsVisible() const { return Visible; }
    bool IsEnabled() const { return Enabled; }
    bool IsTabStop() const { return TabStop; }

protected:
    // Stores value in field when it differs; true when it did.
    static bool StoreIfChanged(WideString& field, const WideString& value);
    static bool StoreIfChanged(bool& field, bool value);

    WideString Name;
    WideString Id;
    Array<WideString> Groups;
    WideString LPos;
    WideString TPos;
    WideString RPos;
    WideString BPos;
    WideString LPosFloor;
    WideString TPosFloor;
    WideString RPosFloor;
    WideString BPosFloor;
    bool Visible = true;
    bool Enabled = true;
    bool TabStop = false;

    // The position texts in the order of the Pos list: the four edges, then
    // their four floors.
    WideString& PositionField(int index);
};

// Numbers as widgets write them into their texts.
WideString FormatG(double value);
WideString FormatF(double value);
