#include "policy/PolicyJudge.h"

#include "base/TextFormat.h"

#include <cmath>
#include <cstdlib>

namespace {

std::string Printed(const Figure& figure, int decimals)
{
    if (!figure.word.empty())
        return figure.word;
    if (std::isinf(figure.number))
        return figure.number < 0 ? "-inf" : "inf";
    return FormatFixed(figure.number, decimals);
}

// A number in whole units of its last printed decimal, as the user reads
// it: -0.97 dBTP printed as -1.0 meets a limit of -1.0. Infinities lie
// beyond every limit.
long long Scaled(double number, int decimals)
{
    if (std::isinf(number))
        return number < 0 ? -(1LL << 62) : 1LL << 62;
    return std::llround(std::strtod(FormatFixed(number, decimals).c_str(), nullptr) * std::pow(10, decimals));
}

std::string LimitText(const PolicyRule& rule, const std::optional<Figure>& first)
{
    const int decimals = rule.measure->decimals;
    std::vector<std::string> parts;
    if (!rule.allowed.empty()) {
        std::string list;
        for (const Figure& value : rule.allowed)
            list += (list.empty() ? "" : ", ") + Printed(value, decimals);
        parts.push_back("one of " + list);
    }
    if (rule.atLeast && rule.atMost)
        parts.push_back(FormatFixed(*rule.atLeast, decimals) + " to " + FormatFixed(*rule.atMost, decimals));
    else if (rule.atLeast)
        parts.push_back("at least " + FormatFixed(*rule.atLeast, decimals));
    else if (rule.atMost)
        parts.push_back("at most " + FormatFixed(*rule.atMost, decimals));
    if (rule.sameInBatch)
        parts.push_back("the same in every file" + (first ? " (" + Printed(*first, decimals) + ")" : std::string()));
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return text;
}

bool Meets(const PolicyRule& rule, const Figure& figure, const std::optional<Figure>& first)
{
    const int decimals = rule.measure->decimals;
    const long long value = Scaled(figure.number, decimals);
    if (!rule.allowed.empty()) {
        bool found = false;
        for (const Figure& allowed : rule.allowed)
            found = found || (figure.word.empty() ? allowed.word.empty() && Scaled(allowed.number, decimals) == value
                                                  : allowed.word == figure.word);
        if (!found)
            return false;
    }
    if (figure.word.empty() && ((rule.atLeast && value < Scaled(*rule.atLeast, decimals)) ||
                                (rule.atMost && value > Scaled(*rule.atMost, decimals))))
        return false;
    return !first || Printed(*first, decimals) == Printed(figure, decimals);
}

} // namespace

const char* RuleOutcomeName(RuleOutcome outcome)
{
    switch (outcome) {
    case RuleOutcome::Warn: return "warn";
    case RuleOutcome::Fail: return "fail";
    case RuleOutcome::NotMeasured: return "not-measured";
    case RuleOutcome::Pass: break;
    }
    return "pass";
}

// A measure the file doesn't give is not-measured, and fails the policy
// unless its rule allows it to be missing. Of a measure per channel, the
// first channel that misses decides; when none does, the highest figure
// is the one shown.
PolicyVerdict PolicyJudge::Judge(const FileCheck& check, const FileFacts& facts)
{
    PolicyVerdict verdict;
    verdict.policy = &policy;
    for (std::size_t r = 0; r < policy.rules.size(); ++r) {
        const PolicyRule& rule = policy.rules[r];
        RuleVerdict ruleVerdict;
        ruleVerdict.rule = &rule;
        std::optional<std::vector<Figure>> figures = rule.measure->read({check, facts, rule.code});
        if (figures && !figures->empty() && rule.channels == ChannelJudging::Highest && rule.measure->perChannel) {
            Figure highest = figures->front();
            for (const Figure& figure : *figures)
                highest = figure.number > highest.number ? figure : highest;
            figures = std::vector<Figure>{highest};
        }
        if (!figures || figures->empty()) {
            ruleVerdict.outcome = RuleOutcome::NotMeasured;
        } else {
            std::optional<Figure>& first = firstFigures[r];
            const std::optional<Figure> held = rule.sameInBatch ? first : std::nullopt;
            const Figure* shown = &figures->front();
            for (const Figure& figure : *figures)
                shown = figure.number > shown->number ? &figure : shown;
            for (const Figure& figure : *figures) {
                if (!Meets(rule, figure, held)) {
                    shown = &figure;
                    ruleVerdict.outcome = rule.severity == RuleSeverity::Fail ? RuleOutcome::Fail : RuleOutcome::Warn;
                    break;
                }
            }
            ruleVerdict.value = Printed(*shown, rule.measure->decimals);
            if (rule.sameInBatch && !first)
                first = *shown;
        }
        ruleVerdict.limit = LimitText(rule, rule.sameInBatch ? firstFigures[r] : std::nullopt);
        const bool fails = ruleVerdict.outcome == RuleOutcome::Fail ||
                           (ruleVerdict.outcome == RuleOutcome::NotMeasured && !ruleVerdict.Excused());
        if (fails)
            verdict.outcome = RuleOutcome::Fail;
        else if (ruleVerdict.outcome == RuleOutcome::Warn && verdict.outcome == RuleOutcome::Pass)
            verdict.outcome = RuleOutcome::Warn;
        verdict.rules.push_back(std::move(ruleVerdict));
    }
    return verdict;
}
