#pragma once

#include "base/ContainerAllocator.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

// The shared string of UTF-16 code units. Copies are cheap: they share their
// characters until one of them is changed. A bad index or exhausted memory
// throws ContainerError.
class WideString {
public:
    static constexpr std::size_t npos = std::u16string_view::npos;

    WideString() = default;
    WideString(const char16_t* text);
    WideString(const char16_t* text, std::size_t length);
    explicit WideString(std::u16string_view text);

    // Text that is known to be ASCII, such as formatted numbers.
    static WideString FromAscii(std::string_view text);

    std::size_t Length() const { return chars ? chars->size() : 0; }
    bool IsEmpty() const { return Length() == 0; }
    // Always terminated by a zero unit.
    const char16_t* Data() const { return chars ? chars->c_str() : u""; }
    std::u16string_view View() const { return {Data(), Length()}; }
    std::u16string ToU16String() const { return std::u16string(View()); }

    char16_t At(std::size_t index) const;
    char16_t operator[](std::size_t index) const { return At(index); }

    WideString Substring(std::size_t start, std::size_t count = npos) const;
    std::size_t Find(char16_t unit, std::size_t from = 0) const { return View().find(unit, from); }
    std::size_t Find(std::u16string_view text, std::size_t from = 0) const { return View().find(text, from); }
    bool EndsWith(std::u16string_view text) const { return View().ends_with(text); }

    WideString& Append(std::u16string_view text);
    WideString& Append(char16_t unit) { return Append(std::u16string_view(&unit, 1)); }
    WideString& operator+=(const WideString& text) { return Append(text.View()); }
    WideString& operator+=(std::u16string_view text) { return Append(text); }
    WideString& operator+=(const char16_t* text) { return Append(std::u16string_view(text)); }
    WideString& operator+=(char16_t unit) { return Append(unit); }

    // Every occurrence of what, left to right and not overlapping, by with.
    WideString Replaced(std::u16string_view what, std::u16string_view with) const;
    // ASCII letters lowered; other units stay.
    WideString ToLowerAscii() const;

    void Clear() { chars.reset(); }

    friend bool operator==(const WideString& a, const WideString& b) { return a.View() == b.View(); }
    friend bool operator==(const WideString& a, const char16_t* b) { return a.View() == std::u16string_view(b); }
    friend bool operator<(const WideString& a, const WideString& b) { return a.View() < b.View(); }

private:
    using Chars = std::basic_string<char16_t, std::char_traits<char16_t>, ContainerAllocator<char16_t>>;

    // Makes the characters this string's own before a change.
    Chars& Own();

    std::shared_ptr<Chars> chars;
};

WideString operator+(const WideString& a, const WideString& b);
WideString operator+(const WideString& a, std::u16string_view b);
WideString operator+(const WideString& a, const char16_t* b);
