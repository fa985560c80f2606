// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_NODE_HOLDERS_H
#define KOVASCTL_NODE_HOLDERS_H

#include <sys/stat.h>

#include <string>

#include "tools/kovasctl/findings.h"

/// Which processes have the node open or locked, as far as this user may see.
void ExamineHolders(const std::string& node, const struct stat& info, Findings& findings);

#endif
