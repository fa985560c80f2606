// SPDX-License-Identifier: MIT
//
// The processes that run, as far as this user may look into them.
#ifndef KOVASCTL_PROCESSES_H
#define KOVASCTL_PROCESSES_H

#include <sys/types.h>

#include <string>
#include <vector>

/// All but this one, by their numbers.
std::vector<std::string> OtherProcesses();

/// What it calls itself; empty when it has ended.
std::string ProcessName(const std::string& process);

/// Whether it has this terminal open; false also when it may not be looked into.
bool HasTerminalOpen(const std::string& process, dev_t terminal);

#endif
