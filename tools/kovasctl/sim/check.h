// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_CHECK_H
#define KOVASCTL_SIM_CHECK_H

#include <string>

#include "OSAdaptScenario.h"

/// Checks scenario files by the adapter that would run them.
///
/// One at a time; the adapter's library stays loaded for as long as this lives.
class ScenarioChecker {
  public:
    /// @param adapterFile  the adapter's library
    /// @throws Failure when it does not load or checks no scenarios
    explicit ScenarioChecker(const std::string& adapterFile);
    ~ScenarioChecker();
    ScenarioChecker(const ScenarioChecker&) = delete;
    ScenarioChecker& operator=(const ScenarioChecker&) = delete;

    /// @return "file:line: reason", the file as it was given; empty: there is no mistake
    std::string MistakeIn(const std::string& file) const;

  private:
    void* m_Library;
    OSADAPT_CHECK_SCENARIO m_Check;
};

/// Tells of a file whether it is good.
/// @return the exit status: a failure when it has a mistake
int CheckScenario(const ScenarioChecker& checker, const std::string& file);

#endif
