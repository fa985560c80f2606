// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_NODE_ACCESS_H
#define KOVASCTL_NODE_ACCESS_H

#include <sys/stat.h>

#include <string>

#include "tools/kovasctl/findings.h"

/// Whether this user may open the node, and if not, what is missing: a group, a new session, or a
/// rule that gives the node to a group at all.
void ExamineAccess(const std::string& node, const struct stat& info, Findings& findings);

#endif
