#pragma once

#include "wave/MetadataText.h"

#include <cstdint>
#include <string>
#include <vector>

// What --info says of one file, written as text and as JSON at once from
// the same calls: fields of objects, lists of objects in them. In text a
// field is "name: value" on its own line, indented by depth, an object of a
// list opens with its heading; in JSON each is a member.
class InfoRecord {
public:
    explicit InfoRecord(bool json) : json(json) {}

    // A member whose JSON value is given as it stands, and its text.
    void Raw(const std::string& name, const std::string& jsonValue, const std::string& textValue);
    void Number(const std::string& name, std::int64_t value);
    // A number that only JSON gives: text has it in the heading.
    void JsonNumber(const std::string& name, std::int64_t value);
    void JsonString(const std::string& name, const std::string& utf8);
    void String(const std::string& name, const std::string& utf8);
    // A decoded text, with its encoding beside it ("nameEncoding" in JSON).
    void Text(const std::string& name, const MetadataText& text);

    // Lines of text: a JSON list of strings, in text a line each.
    void Lines(const std::string& name, const std::vector<MetadataText>& lines);

    // A list of objects, and each object of it, whose text line is heading;
    // in text a list without a name is only its objects.
    void BeginList(const std::string& name);
    void BeginObject(const std::string& heading);
    void EndObject();
    void EndList();

    const std::string& Output() const { return out; }

private:
    void Member(const std::string& name);
    std::string Indent() const { return std::string(static_cast<std::size_t>(depth) * 2, ' '); }

    bool json;
    std::string out;
    int depth = 0;
    // Whether the innermost JSON object or list has a member yet.
    std::vector<bool> filled{false};
    std::vector<bool> listIndents;
};
