#include "check/CheckCommand.h"

#include "base/Utf8.h"
#include "check/WaveCheck.h"
#include "platform/Console.h"

#include <cstdio>

namespace {

constexpr char kUsage[] = "usage: sondara-check [--json] FILE...";

void AppendJsonString(std::string& out, std::u16string_view text)
{
    out += '"';
    for (char16_t unit : text) {
        switch (unit) {
        case u'"': out += "\\\""; break;
        case u'\\': out += "\\\\"; break;
        case u'\r': out += "\\r"; break;
        case u'\n': out += "\\n"; break;
        case u'\t': out += "\\t"; break;
        default:
            if (unit >= 0x20 && unit < 0x7F) {
                out += static_cast<char>(unit);
            } else {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit));
                out += escape;
            }
        }
    }
    out += '"';
}

} // namespace

std::string FormatJson(const std::vector<CheckResult>& results)
{
    std::string out = "[";
    for (std::size_t i = 0; i < results.size(); ++i) {
        out += i == 0 ? "\n  " : ",\n  ";
        out += "{\"path\": ";
        AppendJsonString(out, results[i].path.View());
        out += ", \"report\": ";
        AppendJsonString(out, results[i].report.View());
        out += ", \"hasError\": ";
        out += results[i].hasError ? "true" : "false";
        out += "}";
    }
    out += results.empty() ? "]\n" : "\n]\n";
    return out;
}

std::string FormatText(const std::vector<CheckResult>& results, const char* lineEnd)
{
    std::string out;
    for (const CheckResult& result : results) {
        if (results.size() > 1)
            out += "== " + WideToUtf8(result.path.View()) + "\n";
        // Lines end in LF here and take the platform's line end below.
        out += WideToUtf8(result.report.Replaced(u"\r\n", u"\n").View());
    }
    if (std::string_view(lineEnd) == "\n")
        return out;
    std::string converted;
    converted.reserve(out.size() + out.size() / 8);
    for (char c : out) {
        if (c == '\n')
            converted += lineEnd;
        else
            converted += c;
    }
    return converted;
}

int ConsoleMain(const std::vector<std::u16string>& arguments)
{
    bool json = false;
    bool optionsEnded = false;
    std::vector<WideString> paths;
    for (const std::u16string& argument : arguments) {
        if (!optionsEnded && argument == u"--help") {
            platform::WriteToStandardOutput(std::string(kUsage) + platform::kLineEnd);
            return 0;
        }
        if (!optionsEnded && argument == u"--json") {
            json = true;
        } else if (!optionsEnded && argument == u"--") {
            optionsEnded = true;
        } else if (!optionsEnded && argument.size() > 1 && argument[0] == u'-') {
            platform::WriteToStandardError("sondara-check: unknown option " + WideToUtf8(argument) +
                                           platform::kLineEnd + kUsage + platform::kLineEnd);
            return 2;
        } else {
            paths.emplace_back(argument);
        }
    }
    if (paths.empty()) {
        platform::WriteToStandardError(std::string(kUsage) + platform::kLineEnd);
        return 2;
    }

    std::vector<CheckResult> results;
    bool anyFinding = false;
    for (const WideString& path : paths) {
        CheckResult result{path, {}, false};
        RunWaveCheck(path, result.report, result.hasError);
        anyFinding = anyFinding || result.hasError;
        results.push_back(result);
    }
    platform::WriteToStandardOutput(json ? FormatJson(results) : FormatText(results, platform::kLineEnd));
    return anyFinding ? 1 : 0;
}
