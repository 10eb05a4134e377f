#include "policy/Policy.h"

#include "policy/ReaderShield.h"

#include "base/Utf8.h"
#include "files/FileStream.h"
#include "platform/File.h"
#include "platform/FileSystem.h"

// Parse errors are results, not exceptions: the checker catches none.
#define TOML_EXCEPTIONS 0
#include <toml++/toml.h>

#include <algorithm>

namespace {

constexpr std::string_view kPolicyKeys[] = {"name", "rule"};
constexpr std::string_view kRuleKeys[] = {"name", "measure", "code", "severity", "per-channel", "may-be-missing",
                                          "allowed", "range", "at-least", "at-most", "same-in-batch"};
// A policy file is small; a larger one is a wrong path.
constexpr std::int64_t kLargestPolicyFile = 1 << 20;

class RuleReader {
public:
    RuleReader(const std::string& source, std::string& problem) : source(source), problem(problem) {}

    bool Fail(const toml::node& node, const std::string& message)
    {
        problem = source + ":" + std::to_string(node.source().begin.line) + ": " + message;
        return false;
    }

    bool KnownKeys(const toml::table& table, std::span<const std::string_view> keys)
    {
        for (const auto& [key, value] : table) {
            if (std::find(keys.begin(), keys.end(), key.str()) == keys.end())
                return Fail(value, "unknown key \"" + UnshieldText(key.str()) + "\"");
        }
        return true;
    }

    bool Read(const toml::table& table, PolicyRule& rule)
    {
        if (!KnownKeys(table, kRuleKeys))
            return false;
        std::optional<std::string> measure = table["measure"].value<std::string>();
        if (!measure)
            return Fail(table, "a rule needs a measure");
        measure = UnshieldText(*measure);
        rule.measure = FindPolicyMeasure(*measure);
        if (!rule.measure)
            return Fail(*table.get("measure"), "unknown measure \"" + *measure + "\" (known: " + PolicyMeasureNames() + ")");
        rule.code = UnshieldText(table["code"].value_or(std::string()));
        if (rule.code.empty() != (*measure != "finding"))
            return Fail(table, "a code goes with the measure \"finding\", and only with it");
        rule.name = UnshieldText(table["name"].value_or(rule.code.empty() ? *measure : rule.code));
        if (!Word(table, "severity", {"fail", "warn"}, rule.severity) ||
            !Word(table, "per-channel", {"each", "highest"}, rule.channels))
            return false;
        rule.mayBeMissing = table["may-be-missing"].value_or(false);
        rule.sameInBatch = table["same-in-batch"].value_or(false);
        return Limits(table, rule);
    }

private:
    template <typename Choice>
    bool Word(const toml::table& table, const char* key, std::initializer_list<const char*> words, Choice& choice)
    {
        const toml::node* node = table.get(key);
        if (!node)
            return true;
        const std::string word = node->value_or(std::string());
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (word == words.begin()[i]) {
                choice = static_cast<Choice>(i);
                return true;
            }
        }
        return Fail(*node, std::string(key) + " is one of " + words.begin()[0] + ", " + words.begin()[1]);
    }

    bool Number(const toml::node* node, const char* key, std::optional<double>& number)
    {
        if (!node)
            return true;
        number = node->value<double>();
        return number ? true : Fail(*node, std::string(key) + " takes a number");
    }

    bool Limits(const toml::table& table, PolicyRule& rule)
    {
        if (!Number(table.get("at-least"), "at-least", rule.atLeast) || !Number(table.get("at-most"), "at-most", rule.atMost))
            return false;
        if (const toml::node* range = table.get("range")) {
            const toml::array* ends = range->as_array();
            std::optional<double> low, high;
            if (!ends || ends->size() != 2 || rule.atLeast || rule.atMost ||
                !(low = (*ends)[0].value<double>()) || !(high = (*ends)[1].value<double>()))
                return Fail(*range, "a range is two numbers, [low, high], instead of at-least and at-most");
            if (*low > *high)
                return Fail(*range, "the range's low end is above its high end");
            rule.atLeast = low;
            rule.atMost = high;
        }
        if (const toml::node* allowed = table.get("allowed")) {
            const toml::array* values = allowed->as_array();
            if (!values || values->empty())
                return Fail(*allowed, "allowed takes a list of values");
            for (const toml::node& value : *values) {
                if (const std::optional<double> number = value.value<double>())
                    rule.allowed.push_back({*number, {}});
                else if (const std::optional<std::string> word = value.value<std::string>())
                    rule.allowed.push_back({0, UnshieldText(*word)});
                else
                    return Fail(value, "allowed values are numbers or words");
            }
        }
        if (rule.allowed.empty() && !rule.atLeast && !rule.atMost && !rule.sameInBatch)
            return Fail(table, "a rule needs a limit: allowed, range, at-least, at-most or same-in-batch");
        return true;
    }

    const std::string& source;
    std::string& problem;
};

bool ReadWholeFile(const std::u16string& path, std::string& text)
{
    FileStream stream;
    if (!stream.OpenPlain(WideString(path), platform::kFileAttributeNormal))
        return false;
    const std::int64_t size = stream.GetSize();
    if (size < 0 || size > kLargestPolicyFile)
        return false;
    text.resize(static_cast<std::size_t>(size));
    return stream.Read(text.data(), static_cast<std::uint32_t>(size)) == size;
}

bool IsFile(const std::u16string& path)
{
    const std::uint32_t attributes = platform::GetPathAttributes(path);
    return attributes != platform::kInvalidFileAttributes && !(attributes & platform::kFileAttributeDirectory);
}

} // namespace

FactDepth Policy::Depth() const
{
    FactDepth depth = FactDepth::Header;
    for (const PolicyRule& rule : rules)
        depth = std::max(depth, rule.measure->depth);
    return depth;
}

bool ParsePolicy(std::string_view text, const std::string& source, Policy& policy, std::string& problem)
{
    RuleReader reader(source, problem);
    std::string shielded;
    std::size_t clash = 0;
    if (!ShieldFromReader(text, shielded, clash)) {
        problem = source + ":" + std::to_string(1 + std::count(text.begin(), text.begin() + clash, '\n')) +
                  ": a private-use character of plane 15 that a policy can't hold";
        return false;
    }
    toml::parse_result parsed = toml::parse(shielded, source);
    if (!parsed) {
        problem = source + ":" + std::to_string(parsed.error().source().begin.line) + ": " +
                  UnshieldText(parsed.error().description());
        return false;
    }
    const toml::table& top = parsed.table();
    if (!reader.KnownKeys(top, kPolicyKeys))
        return false;
    policy.name = UnshieldText(top["name"].value_or(std::string()));
    if (policy.name.empty())
        return reader.Fail(top, "a policy needs a name");
    const toml::array* rules = top["rule"].as_array();
    if (!rules || rules->empty())
        return reader.Fail(top, "a policy needs rules: [[rule]] tables");
    for (const toml::node& node : *rules) {
        const toml::table* table = node.as_table();
        if (!table)
            return reader.Fail(node, "a rule is a [[rule]] table");
        PolicyRule rule;
        if (!reader.Read(*table, rule))
            return false;
        policy.rules.push_back(std::move(rule));
    }
    return true;
}

// A shipped policy lies in a folder "policies" beside the program (the
// zips, and a build, which copies them there), or in share/sondara-check
// beside the program's bin folder (the Debian package).
std::u16string FindPolicyFile(const std::u16string& nameOrPath)
{
    const bool isName = nameOrPath.find(u'/') == std::u16string::npos &&
                        nameOrPath.find(u'\\') == std::u16string::npos && !nameOrPath.ends_with(u".toml");
    if (!isName)
        return IsFile(nameOrPath) ? nameOrPath : std::u16string();
    std::u16string folder = platform::GetProgramPath(4096);
    folder.resize(std::min(folder.size(), folder.find_last_of(u"/\\") + 1));
    const std::u16string sep(1, platform::kPathSeparator);
    for (const std::u16string& place :
         {folder + u"policies" + sep, folder + u".." + sep + u"share" + sep + u"sondara-check" + sep + u"policies" + sep}) {
        if (IsFile(place + nameOrPath + u".toml"))
            return place + nameOrPath + u".toml";
    }
    return {};
}

bool LoadPolicy(const std::u16string& nameOrPath, Policy& policy, std::string& problem)
{
    const std::u16string path = FindPolicyFile(nameOrPath);
    std::string text;
    if (path.empty() || !ReadWholeFile(path, text)) {
        problem = "no policy file or shipped policy " + WideToPathUtf8(nameOrPath);
        return false;
    }
    return ParsePolicy(text, WideToPathUtf8(path), policy, problem);
}
