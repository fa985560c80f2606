// SPDX-License-Identifier: MIT
#include "tools/kovasctl/findings.h"

#include <algorithm>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/json_text.h"
#include "tools/kovasctl/paint.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/streams.h"

namespace {

constexpr const char* kIndent = "           ";

std::string Label(Finding::Level level) {
    switch (level) {
    case Finding::Level::Good:
        return Painted(Colour::Green, "good   ");
    case Finding::Level::Note:
        return Painted(Colour::Yellow, "note   ");
    case Finding::Level::Problem:
        return Painted(Colour::Red, "problem");
    }
    return "";
}

std::string Indented(const std::string& text) {
    std::string indented;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        indented += (at == 0 ? "" : kIndent) + Printable(text.substr(at, end - at)) + "\n";
        at = end + 1;
    }
    return indented;
}

} // namespace

bool Findings::HasProblem() const {
    return std::any_of(m_All.begin(), m_All.end(), [](const Finding& finding) {
        return finding.level == Finding::Level::Problem;
    });
}

std::string Findings::AsText() const {
    std::string text;
    std::string subject;
    for (const Finding& finding : m_All) {
        if (finding.subject != subject) {
            subject = finding.subject;
            text += Painted(Colour::Bold, Printable(subject)) + "\n";
        }
        text += "  " + Label(finding.level) + "  " + Indented(finding.text);
        text += finding.mend.empty() ? "" : kIndent + ("mend: " + Indented(finding.mend));
    }
    return text;
}

int Findings::Report(bool asJson) const {
    WriteData(asJson ? FindingsAsJson(*this) : AsText());
    return HasProblem() ? kFailed : kDone;
}
