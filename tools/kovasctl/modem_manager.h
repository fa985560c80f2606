// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_MODEM_MANAGER_H
#define KOVASCTL_MODEM_MANAGER_H

#include <sys/stat.h>

#include <string>

#include "tools/kovasctl/findings.h"

/// Whether ModemManager runs and will take the node for a modem's: it opens such a port when it
/// comes and sends AT commands to it.
void ExamineModemManager(const std::string& node, const struct stat& info, Findings& findings);

#endif
