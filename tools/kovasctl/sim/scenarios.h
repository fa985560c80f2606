// SPDX-License-Identifier: MIT
//
// The ready scenarios, and the file that a person means by a scenario.
#ifndef KOVASCTL_SIM_SCENARIOS_H
#define KOVASCTL_SIM_SCENARIOS_H

#include <string>
#include <vector>

struct ReadyScenario {
    std::string name;
    std::string description; // one line
    std::string file;        // absolute
};

/// By their names. Those of the build tree that the program runs from, or the installed ones.
std::vector<ReadyScenario> ReadyScenarios();

/// All of them for people, a line each; or one JSON object and a line end.
std::string ScenariosAsText(const std::vector<ReadyScenario>& scenarios);
std::string ScenariosAsJson(const std::vector<ReadyScenario>& scenarios);

/// @param choice  the name of a ready scenario; or a file, when it has a '/' or a '.' in it
/// @return the file, as it was given or absolute
/// @throws WrongUse when there is neither
std::string FindScenario(const std::string& choice);

#endif
