// SPDX-License-Identifier: MIT
#include <cstdio>

#include "tools/kovasctl/conformance/report.h"
#include "tools/kovasctl/printable.h"

namespace {

std::string Character(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\n':
        return "&#10;";
    default:
        return std::string(1, character);
    }
}

// XML has no way to write a control character, or one of these two.
std::string WithoutNonCharacters(std::string text) {
    for (const char* refused : {"\xef\xbf\xbe", "\xef\xbf\xbf"}) {
        for (size_t at = 0; (at = text.find(refused)) != std::string::npos;) {
            text.replace(at, 3, "?");
        }
    }
    return text;
}

std::string Attribute(const std::string& text) {
    std::string escaped;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        for (const char character : WithoutNonCharacters(Printable(text.substr(at, end - at)))) {
            escaped += Character(character);
        }
        escaped += end < text.size() ? Character('\n') : "";
        at = end + 1;
    }
    return "\"" + escaped + "\"";
}

std::string Seconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "\"%.3f\"", seconds);
    return text;
}

std::string Body(const Result& result) {
    const std::string seen = Attribute(result.outcome.seen);
    switch (result.outcome.verdict) {
    case Verdict::Pass:
        return "";
    case Verdict::Fail:
        return "<failure message=" + seen + ">" +
               WithoutNonCharacters(Printable(result.rule->broken)) + "</failure>";
    case Verdict::NotApplicable:
        return "<skipped message=" + seen + "/>";
    }
    return "";
}

std::string TestCase(const Result& result) {
    return "    <testcase classname=\"check-adapter\" name=" +
           Attribute(std::string(result.rule->number) + " " + result.rule->text) +
           " time=" + Seconds(result.outcome.seconds) + ">" + Body(result) + "</testcase>\n";
}

struct Totals {
    size_t failures = 0;
    size_t skipped = 0;
    double seconds = 0;
};

Totals Sum(const Results& results) {
    Totals totals;
    for (const Result& result : results) {
        totals.failures += result.outcome.verdict == Verdict::Fail ? 1 : 0;
        totals.skipped += result.outcome.verdict == Verdict::NotApplicable ? 1 : 0;
        totals.seconds += result.outcome.seconds;
    }
    return totals;
}

} // namespace

std::string ResultsAsJunit(const std::string& file, const Results& results) {
    const Totals totals = Sum(results);
    const std::string counts = " tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
                               std::to_string(totals.failures) + "\" errors=\"0\" skipped=\"" +
                               std::to_string(totals.skipped) +
                               "\" time=" + Seconds(totals.seconds);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts +
                       ">\n  <testsuite name=" + Attribute(file) + counts + ">\n";
    for (const Result& result : results) {
        text += TestCase(result);
    }
    return text + "  </testsuite>\n</testsuites>\n";
}
