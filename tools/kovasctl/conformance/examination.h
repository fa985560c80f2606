// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_EXAMINATION_H
#define KOVASCTL_CONFORMANCE_EXAMINATION_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tools/kovasctl/conformance/kit_options.h"
#include "tools/kovasctl/conformance/rule.h"
#include "tools/kovasctl/conformance/verdict.h"

using Selection = std::vector<const Rule*>;

/// @param numbers  "R9b", or "R9" for all of that number; empty: all rules
/// @return in the order of the table
/// @throws WrongUse when there is no such rule
Selection SelectRules(const std::vector<std::string>& numbers);

/// Tries rules, each once, those that others build upon first.
class Examination {
  public:
    /// @param explain  why a failed rule may have failed, as the adapter says since it is asked last
    Examination(const KitOptions& options, Selection selection,
                std::function<std::string()> explain);

    /// @throws Failure, Interrupted
    const Outcome& OutcomeOf(const Rule& rule);

  private:
    Outcome Try(const Rule& rule);
    std::string ReasonNotTo(const Rule& rule);
    std::string BrokenBelow(const Rule& rule); // the rule's number; empty for none
    bool IsSelected(const std::string& number) const;

    const KitOptions& m_Options;
    Selection m_Selection;
    std::function<std::string()> m_Explain;
    std::map<const Rule*, Outcome> m_Outcomes;
};

#endif
