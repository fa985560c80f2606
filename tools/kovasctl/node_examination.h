// SPDX-License-Identifier: MIT
//
// Why a port that is a node of the system ("/dev/ttyUSB0") may not open, found out without opening
// it.
#ifndef KOVASCTL_NODE_EXAMINATION_H
#define KOVASCTL_NODE_EXAMINATION_H

#include <string>

#include "tools/kovasctl/findings.h"

/// Whether the node is there, this user may open it, others hold it, and whether something waits to
/// grab it.
void ExamineNode(const std::string& node, Findings& findings);

#endif
