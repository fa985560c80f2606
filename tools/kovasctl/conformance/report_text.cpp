// SPDX-License-Identifier: MIT
#include <algorithm>

#include "tools/kovasctl/conformance/report.h"
#include "tools/kovasctl/paint.h"
#include "tools/kovasctl/printable.h"

namespace {

constexpr const char* kIndent = "                      ";

std::string Label(Verdict verdict) {
    switch (verdict) {
    case Verdict::Pass:
        return Painted(Colour::Green, "pass          ");
    case Verdict::Fail:
        return Painted(Colour::Red, "fail          ");
    case Verdict::NotApplicable:
        return Painted(Colour::Dim, "not applicable");
    }
    return "";
}

const char* SeenLabel(Verdict verdict) {
    return verdict == Verdict::NotApplicable ? "why: " : "seen: ";
}

std::string Lines(const std::string& text) {
    std::string lines;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        lines += (at == 0 ? "" : kIndent + std::string("  ")) +
                 Printable(text.substr(at, end - at)) + "\n";
        at = end + 1;
    }
    return lines;
}

size_t CountOf(const Results& results, Verdict verdict) {
    return static_cast<size_t>(
        std::count_if(results.begin(), results.end(),
                      [&](const Result& result) { return result.outcome.verdict == verdict; }));
}

} // namespace

bool HasFailure(const Results& results) { return CountOf(results, Verdict::Fail) > 0; }

std::string RuleAsText(const Rule& rule) {
    const std::string needs = NeedsText(rule.needs);
    return Padded(rule.number, 6) + rule.text + "\n      broken: " + rule.broken + "\n" +
           (needs.empty() ? "" : "      needs: " + needs + "\n");
}

std::string ResultAsText(const Result& result) {
    return Label(result.outcome.verdict) + "  " + Padded(result.rule->number, 6) +
           result.rule->text + "\n" + kIndent + "broken: " + result.rule->broken + "\n" + kIndent +
           SeenLabel(result.outcome.verdict) + Lines(result.outcome.seen);
}

std::string SummaryAsText(const Results& results) {
    return std::to_string(results.size()) + (results.size() == 1 ? " rule: " : " rules: ") +
           std::to_string(CountOf(results, Verdict::Pass)) + " pass, " +
           std::to_string(CountOf(results, Verdict::Fail)) + " fail, " +
           std::to_string(CountOf(results, Verdict::NotApplicable)) + " not applicable\n";
}
