// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_DEVICE_TREE_H
#define KOVASCTL_DEVICE_TREE_H

#include <string>

#include "tools/kovasctl/snapshot.h"

/// Devices with their ports as a tree for people, in aligned columns.
std::string DeviceTree(const Snapshot& snapshot);

#endif
