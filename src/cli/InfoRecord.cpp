#include "cli/InfoRecord.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"

void InfoRecord::Member(const std::string& name)
{
    if (json) {
        out += filled.back() ? ", " : "";
        AppendJsonString(out, Utf8ToWide(name));
        out += ": ";
    } else {
        out += Indent() + name + ": ";
    }
    filled.back() = true;
}

void InfoRecord::Raw(const std::string& name, const std::string& jsonValue, const std::string& textValue)
{
    Member(name);
    out += json ? jsonValue : textValue + "\n";
}

void InfoRecord::Number(const std::string& name, std::int64_t value)
{
    Raw(name, std::to_string(value), std::to_string(value));
}

void InfoRecord::JsonNumber(const std::string& name, std::int64_t value)
{
    if (json)
        Number(name, value);
}

void InfoRecord::JsonString(const std::string& name, const std::string& utf8)
{
    if (json)
        String(name, utf8);
}

void InfoRecord::String(const std::string& name, const std::string& utf8)
{
    std::string quoted;
    AppendJsonString(quoted, Utf8ToWide(utf8));
    Raw(name, quoted, utf8);
}

void InfoRecord::Text(const std::string& name, const MetadataText& text)
{
    std::string quoted;
    AppendJsonString(quoted, text.text);
    if (json) {
        Raw(name, quoted, "");
        String(name + "Encoding", EncodingName(text));
    } else {
        Raw(name, "", "\"" + WideToUtf8(text.text) + "\" (" + EncodingName(text) + ")");
    }
}

void InfoRecord::BeginList(const std::string& name)
{
    // In text a list without a name is its objects alone, not indented.
    const bool indented = json || !name.empty();
    if (json) {
        Member(name);
        out += "[";
    } else if (indented) {
        out += Indent() + name + ":\n";
    }
    depth += indented;
    listIndents.push_back(indented);
    filled.push_back(false);
}

void InfoRecord::BeginObject(const std::string& heading)
{
    if (json) {
        out += filled.back() ? ", {" : "{";
        filled.back() = true;
    } else {
        out += Indent() + heading + "\n";
    }
    ++depth;
    filled.push_back(false);
}

void InfoRecord::EndObject()
{
    if (json)
        out += "}";
    --depth;
    filled.pop_back();
}

void InfoRecord::EndList()
{
    if (json)
        out += "]";
    depth -= listIndents.back();
    listIndents.pop_back();
    filled.pop_back();
}

void InfoRecord::Lines(const std::string& name, const std::vector<MetadataText>& lines)
{
    std::string jsonValue = "[";
    std::string textValue;
    for (const MetadataText& line : lines) {
        jsonValue += jsonValue.size() > 1 ? ", " : "";
        AppendJsonString(jsonValue, line.text);
        textValue += "\n" + Indent() + "  " + WideToUtf8(line.text);
    }
    if (json)
        Raw(name, jsonValue + "]", "");
    else
        out += Indent() + name + ":" + textValue + "\n";
}
