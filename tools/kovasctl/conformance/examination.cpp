// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/examination.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "tools/kovasctl/conformance/rule_process.h"
#include "tools/kovasctl/failure.h"

namespace {

bool IsMeant(const Rule& rule, const std::string& number) {
    const std::string whole = rule.number;
    return whole == number || whole.substr(0, whole.size() - 1) == number;
}

bool IsAnyMeant(const Rule& rule, const std::vector<std::string>& numbers) {
    return numbers.empty() || std::any_of(numbers.begin(), numbers.end(), [&](const auto& number) {
               return IsMeant(rule, number);
           });
}

bool HasWhatItNeeds(const Rule& rule, const KitOptions& options) {
    switch (rule.needs) {
    case Needs::Nothing:
        return true;
    case Needs::Port:
        return !options.ports.empty();
    case Needs::StalledPort:
        return !options.stalledPorts.empty();
    case Needs::Commands:
        return options.HasCommands();
    case Needs::CommandsAndPort:
        return options.HasCommands() && !options.ports.empty();
    }
    return false;
}

const Rule& RuleOf(const std::string& number) {
    return *std::find_if(Rules().begin(), Rules().end(),
                         [&](const Rule& rule) { return rule.number == number; });
}

} // namespace

Selection SelectRules(const std::vector<std::string>& numbers) {
    for (const std::string& number : numbers) {
        if (std::none_of(Rules().begin(), Rules().end(),
                         [&](const Rule& rule) { return IsMeant(rule, number); })) {
            throw WrongUse("there is no rule '" + number + "'; --list shows them");
        }
    }
    Selection selection;
    for (const Rule& rule : Rules()) {
        if (IsAnyMeant(rule, numbers)) {
            selection.push_back(&rule);
        }
    }
    return selection;
}

Examination::Examination(const KitOptions& options, Selection selection,
                         std::function<std::string()> explain)
    : m_Options(options), m_Selection(std::move(selection)), m_Explain(std::move(explain)) {}

const Outcome& Examination::OutcomeOf(const Rule& rule) {
    const auto known = m_Outcomes.find(&rule);
    return known != m_Outcomes.end() ? known->second : m_Outcomes[&rule] = Try(rule);
}

Outcome Examination::Try(const Rule& rule) {
    const std::string reason = ReasonNotTo(rule);
    if (!reason.empty()) {
        return {Verdict::NotApplicable, reason};
    }
    m_Explain();
    Outcome outcome = TryRule(rule, m_Options);
    const std::string why = outcome.verdict == Verdict::Pass ? "" : m_Explain();
    outcome.seen += why.empty() ? "" : "\nits last word in the log: " + why;
    return outcome;
}

std::string Examination::ReasonNotTo(const Rule& rule) {
    if (!HasWhatItNeeds(rule, m_Options)) {
        return std::string("it needs ") + NeedsText(rule.needs);
    }
    const std::string number = BrokenBelow(rule);
    return number.empty() ? "" : "it builds upon " + number + ", which is broken";
}

// What could not be tried stops nobody: who builds upon it finds the reason by itself.
std::string Examination::BrokenBelow(const Rule& rule) {
    for (const std::string number : rule.after) {
        const Rule& lower = RuleOf(number);
        const bool isBroken = IsSelected(number) && OutcomeOf(lower).verdict == Verdict::Fail;
        std::string found = isBroken ? number : BrokenBelow(lower);
        if (!found.empty()) {
            return found;
        }
    }
    return "";
}

bool Examination::IsSelected(const std::string& number) const {
    return std::any_of(m_Selection.begin(), m_Selection.end(),
                       [&](const Rule* rule) { return rule->number == number; });
}
