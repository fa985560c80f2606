// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_HOST_H
#define KOVASCTL_SIM_HOST_H

#include <string>

#include "tools/kovasctl/global_options.h"

/// Is a host itself: opens every port that is there or comes, again and again until it opens, sends
/// nothing, and shows what comes, goes and arrives, until the scenario has ended.
/// @param control  the simulation's control directory
/// @return the exit status
/// @throws Interrupted, Failure
int RunSimHost(const GlobalOptions& global, const std::string& control);

#endif
