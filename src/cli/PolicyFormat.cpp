#include "cli/PolicyFormat.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"

namespace {

void AppendString(std::string& out, const std::string& text)
{
    AppendJsonString(out, Utf8ToWide(text));
}

} // namespace

std::string FormatRuleSentence(const RuleVerdict& rule)
{
    const std::string unit = rule.rule->measure->unit;
    const std::string value = rule.value.empty() ? "not measured" : rule.value + (unit.empty() ? "" : " " + unit);
    return rule.rule->name + ": " + value + ", " + rule.limit + " (" + RuleOutcomeName(rule.outcome) +
           (rule.Excused() ? ", may be missing" : "") + ")";
}

std::string FormatPolicyText(const PolicyVerdict& verdict)
{
    const std::string head = "policy " + verdict.policy->name + ": ";
    std::string text;
    for (const RuleVerdict& rule : verdict.rules) {
        if (rule.outcome != RuleOutcome::Pass && !rule.Excused())
            text += head + FormatRuleSentence(rule) + "\n";
    }
    return text.empty() ? head + RuleOutcomeName(verdict.outcome) + "\n" : text;
}

// A figure that is a number goes out as a number, -inf and a word as a
// string, a missing one as null.
std::string FormatPolicyJson(const PolicyVerdict& verdict)
{
    std::string json = "\"policy\": {\"name\": ";
    AppendString(json, verdict.policy->name);
    json += std::string(", \"outcome\": \"") + RuleOutcomeName(verdict.outcome) + "\", \"rules\": [";
    for (std::size_t i = 0; i < verdict.rules.size(); ++i) {
        const RuleVerdict& rule = verdict.rules[i];
        json += i ? ", {\"rule\": " : "{\"rule\": ";
        AppendString(json, rule.rule->name);
        json += std::string(", \"measure\": \"") + rule.rule->measure->name + "\", \"value\": ";
        const bool number = !rule.value.empty() && rule.value.find_first_not_of("-.0123456789") == std::string::npos;
        if (number)
            json += rule.value;
        else if (rule.value.empty())
            json += "null";
        else
            AppendString(json, rule.value);
        json += ", \"unit\": ";
        AppendString(json, rule.rule->measure->unit);
        json += ", \"limit\": ";
        AppendString(json, rule.limit);
        json += std::string(", \"outcome\": \"") + RuleOutcomeName(rule.outcome) + "\"}";
    }
    return json + "]}";
}
