// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_PROGRAM_H
#define KOVASCTL_SIM_PROGRAM_H

#include <functional>
#include <string>
#include <vector>

/// The words as exec wants them: borrowed, with a null behind them.
std::vector<char*> ArgumentPointers(std::vector<std::string>& words);

/// Runs a program in a directory, with the tool's own standard streams, until it ends. Signals that
/// are sent to the tool are passed on to it; those of the terminal reach it anyway.
///
/// @param command  the program, which is looked for as a shell does it, from where the person
///                 stands; and its arguments
/// @param isOver   asked ten times a second; once it is true, the program is told to end (SIGTERM),
///                 and made to after 20 seconds. Empty: it ends by itself
/// @return its exit status; 128 and the signal's number when a signal has ended it, but 0 when that
///         was SIGTERM because it was over
/// @throws Failure when it cannot be started
int RunProgram(const std::vector<std::string>& command, const std::string& directory,
               const std::function<bool()>& isOver);

#endif
