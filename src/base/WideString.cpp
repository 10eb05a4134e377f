#include "base/WideString.h"

#include "base/ContainerError.h"

namespace {

template <typename Chars>
std::shared_ptr<Chars> MakeChars(std::u16string_view text)
{
    if (text.empty())
        return nullptr;
    return std::allocate_shared<Chars>(ContainerAllocator<Chars>(), text.data(), text.size());
}

} // namespace

WideString::WideString(const char16_t* text)
    : chars(MakeChars<Chars>(text ? std::u16string_view(text) : std::u16string_view()))
{
}

WideString::WideString(const char16_t* text, std::size_t length)
    : chars(MakeChars<Chars>(std::u16string_view(text, length)))
{
}

WideString::WideString(std::u16string_view text)
    : chars(MakeChars<Chars>(text))
{
}

WideString WideString::FromAscii(std::string_view text)
{
    WideString result;
    if (text.empty())
        return result;
    Chars& own = result.Own();
    own.reserve(text.size());
    for (char c : text)
        own.push_back(static_cast<char16_t>(static_cast<unsigned char>(c)));
    return result;
}

char16_t WideString::At(std::size_t index) const
{
    if (index >= Length())
        ThrowContainerError(kResultInvalidArgument);
    return (*chars)[index];
}

WideString WideString::Substring(std::size_t start, std::size_t count) const
{
    if (start > Length())
        ThrowContainerError(kResultInvalidArgument);
    if (start == 0 && count >= Length())
        return *this;
    return WideString(View().substr(start, count));
}

WideString& WideString::Append(std::u16string_view text)
{
    if (text.empty())
        return *this;
    if (Length() > Chars().max_size() - text.size())
        ThrowContainerError(kResultSizeOverflow);
    Own().append(text.data(), text.size());
    return *this;
}

WideString WideString::Replaced(std::u16string_view what, std::u16string_view with) const
{
    if (what.empty() || Find(what) == npos)
        return *this;
    WideString result;
    std::u16string_view rest = View();
    for (std::size_t hit = rest.find(what); hit != npos; hit = rest.find(what)) {
        result.Append(rest.substr(0, hit));
        result.Append(with);
        rest.remove_prefix(hit + what.size());
    }
    result.Append(rest);
    return result;
}

WideString WideString::ToLowerAscii() const
{
    WideString result = *this;
    for (std::size_t i = 0; i < Length(); ++i) {
        char16_t unit = (*chars)[i];
        if (unit >= u'A' && unit <= u'Z')
            result.Own()[i] = static_cast<char16_t>(unit - u'A' + u'a');
    }
    return result;
}

WideString::Chars& WideString::Own()
{
    if (!chars)
        chars = std::allocate_shared<Chars>(ContainerAllocator<Chars>());
    else if (chars.use_count() > 1)
        chars = std::allocate_shared<Chars>(ContainerAllocator<Chars>(), *chars);
    return *chars;
}

WideString operator+(const WideString& a, const WideString& b)
{
    WideString result = a;
    result += b;
    return result;
}

WideString operator+(const WideString& a, std::u16string_view b)
{
    WideString result = a;
    result += b;
    return result;
}

WideString operator+(const WideString& a, const char16_t* b)
{
    return a + std::u16string_view(b);
}
