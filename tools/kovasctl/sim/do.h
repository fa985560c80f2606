// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_DO_H
#define KOVASCTL_SIM_DO_H

#include <string>
#include <vector>

/// Gives a command to a running simulation, by the program kovasmgr-virtual beside this one. What it
/// says is this command's; errors by this program's name.
/// @param options   for it: where the simulation is
/// @param sentence  a command's words, or all of them as one text
/// @return its exit status
/// @throws Failure when it is not there; WrongUse when there are no words, or a quote is not closed
int DoInSimulation(const std::vector<std::string>& options,
                   const std::vector<std::string>& sentence);

#endif
