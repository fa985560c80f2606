// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_COMMAND_H
#define KOVASCTL_COMMAND_H

#include <functional>
#include <vector>

#include "tools/kovasctl/global_options.h"

namespace CLI {
class App;
}

/// Does the work, once the command line has been read.
/// @return the exit status
using Action = std::function<int(const GlobalOptions&)>;

/// Declares a command's own options and operands.
using SetUp = Action (*)(CLI::App& app);

struct Command {
    const char* name;
    const char* summary;
    const char* description; // empty: the summary says all
    const char* example;
    bool hasJson;
    SetUp setUp;
};

/// All commands, in the order of the help.
const std::vector<Command>& Commands();

Action SetUpList(CLI::App& app);
Action SetUpWatch(CLI::App& app);
Action SetUpTerm(CLI::App& app);
Action SetUpSend(CLI::App& app);
Action SetUpReceive(CLI::App& app);
Action SetUpDoctor(CLI::App& app);
Action SetUpAdapterInfo(CLI::App& app);
Action SetUpCheckAdapter(CLI::App& app);
Action SetUpStats(CLI::App& app);
Action SetUpSim(CLI::App& app);

#endif
