// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_DIFFERENCE_H
#define KOVASCTL_DIFFERENCE_H

#include <vector>

#include "tools/kovasctl/snapshot.h"

/// Something that is different between two snapshots.
struct Change {
    enum class Kind { DevicePresent, DeviceAdded, DeviceRemoved, PortAdded, PortRemoved };

    Kind kind;
    Device device; // with the ports that came or went: all of a device, or just the one
};

/// What went, then what came. A device that shares no port with its namesake of before has been
/// pulled out and plugged in again.
std::vector<Change> Difference(const Snapshot& before, const Snapshot& after);

/// Every device, as present.
std::vector<Change> AllPresent(const Snapshot& snapshot);

#endif
