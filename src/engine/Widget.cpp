#include "engine/Widget.h"

#include "layouttext/AttributeMap.h"

#include <cstdint>
#include <cstdio>

namespace {

constexpr int kPositionFieldCount = 8;

WideString BoolText(bool flag)
{
    return flag ? u"true" : u"false";
}

// Only the text "true" is true.
bool IsTrueText(const WideString& value)
{
    return value == u"true";
}

WideString Format(const char* format, double value)
{
    // Wide enough for "%f" of any float: 39 digits before the point.
    char text[64];
    const int length = std::snprintf(text, sizeof text, format, value);
    if (length < 0)
        return {};
    return WideString::FromAscii(std::string_view(text, static_cast<std::size_t>(length) < sizeof text
                                                           ? static_cast<std::size_t>(length)
                                                           : sizeof text - 1));
}

void AppendOption(WideString& options, const char16_t* item)
{
    if (!options.IsEmpty())
        options += u',';
    options += item;
}

} // namespace

WideString FormatG(double value)
{
    return Format("%g", value);
}

WideString FormatF(double value)
{
    return Format("%f", value);
}

// Overrideables

// The keys that every widget knows in SetAttribute: Enable, Visible and
// the four position texts. True only when the stored value changed, which
// is what decides about repainting.
bool Widget::SetAttribute(const WideString& key, const WideString& value)
{
    if (key == u"Enable")
        return StoreIfChanged(Enabled, IsTrueText(value));
    if (key == u"Visible")
        return StoreIfChanged(Visible, IsTrueText(value));
    if (key == u"LPos")
        return StoreIfChanged(LPos, value);
    if (key == u"TPos")
        return StoreIfChanged(TPos, value);
    if (key == u"RPos")
        return StoreIfChanged(RPos, value);
    if (key == u"BPos")
        return StoreIfChanged(BPos, value);
    return false;
}

bool Widget::Draw(platform::Graphics&, const RectF&)
{
    return false;
}

// Takes the common keys of a section. Fields whose key or item is missing
// keep their values; true when any field changed, and a present Group
// always counts as a change.
bool Widget::Load(const AttributeMap& map)
{
    bool changed = false;

    const WideString posKey = map.Contains(u"Pos") ? WideString(u"Pos") : WideString(u"Position");
    if (map.Contains(posKey)) {
        const std::int32_t count = map.GetItemCount(posKey);
        for (int i = 0; i < kPositionFieldCount && i < count; ++i)
            changed |= StoreIfChanged(PositionField(i), map.GetItemOr(posKey, i, {}));
    }

    if (map.Contains(u"Group")) {
        Groups.Clear();
        const std::int32_t count = map.GetItemCount(u"Group");
        for (std::int32_t i = 0; i < count; ++i)
            Groups.Add(map.GetItemOr(u"Group", i, {}));
        changed = true;
    }

    if (map.Contains(u"Option")) {
        changed |= StoreIfChanged(Visible, !map.HasItem(u"Option", u"Invisible"));
        changed |= StoreIfChanged(Enabled, !map.HasItem(u"Option", u"Disable"));
        changed |= StoreIfChanged(TabStop, map.HasItem(u"Option", u"TabStop"));
    }

    // Names and ids are taken as they stand, without unescaping.
    if (map.Contains(u"Name"))
        changed |= StoreIfChanged(Name, map.GetValue(u"Name", {}, false));
    if (map.Contains(u"Id"))
        changed |= StoreIfChanged(Id, map.GetValue(u"Id", {}, false));
    return changed;
}

// The readable common keys, as "true" or "false"; false for any other key.
bool Widget::GetAttribute(const WideString& key, WideString& value)
{
    if (key == u"Enable") {
        value = BoolText(Enabled);
        return true;
    }
    if (key == u"Visible") {
        value = BoolText(Visible);
        return true;
    }
    return false;
}

// Appends the widget's edges and name to text, one "Key=value" line each,
// and its Disable and Invisible flags to the comma list options. The floors,
// groups and id are not written. With skip nothing is touched.
bool Widget::SaveToText(WideString& text, WideString& options, bool skip)
{
    if (skip)
        return false;
    text += u"Pos=";
    text += LPos;
    text += u',';
    text += TPos;
    text += u',';
    text += RPos;
    text += u',';
    text += BPos;
    text += u"\r\n";
    if (!Name.IsEmpty()) {
        text += u"Name=";
        text += Name;
        text += u"\r\n";
    }
    if (!Enabled)
        AppendOption(options, u"Disable");
    if (!Visible)
        AppendOption(options, u"Invisible");
    return true;
}

bool Widget::IsOpaque()
{
    return false;
}

// Operations

// The Id of the layout, or the widget's address when it has none, so that
// the result is never empty and unique unless a layout repeats an Id.
WideString Widget::GetId() const
{
    if (!Id.IsEmpty())
        return Id;
    // As printf's %p writes it on Windows: upper-case, as many digits as a
    // pointer has.
    static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    const auto address = reinterpret_cast<std::uintptr_t>(this);
    WideString text;
    for (std::size_t shift = sizeof address * 8; shift > 0; shift -= 4)
        text += kDigits[(address >> (shift - 4)) & 0xF];
    return text;
}

// True when the widget exists under group: an empty group, a widget
// without groups, or one of its groups equal to it.
bool Widget::IsInGroup(const WideString& group) const
{
    if (group.IsEmpty() || Groups.IsEmpty())
        return true;
    for (const WideString& entry : Groups) {
        if (entry == group)
            return true;
    }
    return false;
}

bool Widget::SetBoolAttribute(const WideString& key, bool flag)
{
    return SetAttribute(key, BoolText(flag));
}

// Overwrites the four edges with plain numbers from the left and the top.
// Owners of inner widgets place them so.
bool Widget::SetBounds(const RectF& rect)
{
    LPos = WideString(u"L") + FormatG(rect.x);
    TPos = WideString(u"T") + FormatG(rect.y);
    RPos = WideString(u"L") + FormatG(rect.x + rect.width);
    BPos = WideString(u"T") + FormatG(rect.y + rect.height);
    return true;
}

bool Widget::StoreIfChanged(WideString& field, const WideString& value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}

bool Widget::StoreIfChanged(bool& field, bool value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}

WideString& Widget::PositionField(int index)
{
    WideString* const fields[kPositionFieldCount] = {&LPos,      &TPos,      &RPos,      &BPos,
                                                     &LPosFloor, &TPosFloor, &RPosFloor, &BPosFloor};
    return *fields[index];
}
