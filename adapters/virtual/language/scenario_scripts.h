// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_SCRIPTS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_SCRIPTS_H

#include <memory>
#include <string>
#include <vector>

#include "adapters/shared/toml_table.h"
#include "adapters/virtual/language/copy_numbers.h"
#include "adapters/virtual/language/scenario_names.h"

/// The sentences of an array, which copies of a port have in common.
using Sentences = std::shared_ptr<const std::vector<TomlText>>;

Sentences ReadSentences(TomlTable& table, const char* key);

/// The sentences of one place.
struct Script {
    Sentences sentences;
    std::string port; // whose they are; empty: nobody's
    CopyNumbers numbers;
};

/// All sentences of a scenario, which become events when all names are known.
class ScenarioScripts {
  public:
    explicit ScenarioScripts(Mistake& mistake) : m_Mistake(mistake) {}

    /// @param table, key  where they stand, for the mistake that there are too many in all
    void Add(const TomlTable& table, const char* key, Script script);

    /// In the order in which they were added.
    std::vector<Event> ReadEvents(const ScenarioNames& names) const;

  private:
    Mistake& m_Mistake;
    std::vector<Script> m_Scripts;
    size_t m_Sentences = 0;
};

#endif
