// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_DO_H
#define KOVASCTL_SIM_DO_H

#include <string>
#include <vector>

/// Gives a command to a running simulation, by the program kovasmgr-virtual beside this one, which
/// takes this process over: what it says and its exit status are this command's.
/// @param options   for it: where the simulation is
/// @param sentence  a command's words, or all of them as one text
/// @throws Failure when it is not there; WrongUse when a quote is not closed
[[noreturn]] void DoInSimulation(const std::vector<std::string>& options,
                                 const std::vector<std::string>& sentence);

#endif
