// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_PERMISSION_TEXT_H
#define KOVASMGR_ADAPTERS_LINUX_PERMISSION_TEXT_H

#include <string>

/// Why this user may not open a node, with the command that mends it.
std::string PermissionText(const std::string& node);

#endif
