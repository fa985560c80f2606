// SPDX-License-Identifier: MIT
#include "tools/kovasctl/difference.h"

#include <algorithm>

namespace {

bool HasPort(const Device& device, const Port& wanted) {
    return std::any_of(device.ports.begin(), device.ports.end(), [&](const Port& port) {
        return port.id == wanted.id && port.name == wanted.name;
    });
}

bool SharesAPort(const Device& left, const Device& right) {
    return std::any_of(left.ports.begin(), left.ports.end(),
                       [&](const Port& port) { return HasPort(right, port); });
}

// Null when it is not there, or there without any port of before.
const Device* FindSame(const Snapshot& snapshot, const Device& device) {
    for (const Device& candidate : snapshot.devices) {
        if (candidate.name == device.name && SharesAPort(candidate, device)) {
            return &candidate;
        }
    }
    return nullptr;
}

/// What `from` has and `other` has not.
void AppendMissing(const Snapshot& from, const Snapshot& other, Change::Kind deviceKind,
                   Change::Kind portKind, std::vector<Change>& changes) {
    for (const Device& device : from.devices) {
        const Device* same = FindSame(other, device);
        if (same == nullptr) {
            changes.push_back({deviceKind, device});
            continue;
        }
        for (const Port& port : device.ports) {
            if (!HasPort(*same, port)) {
                changes.push_back({portKind, {device.name, device.text, {port}}});
            }
        }
    }
}

} // namespace

std::vector<Change> Difference(const Snapshot& before, const Snapshot& after) {
    using Kind = Change::Kind;
    std::vector<Change> changes;
    AppendMissing(before, after, Kind::DeviceRemoved, Kind::PortRemoved, changes);
    AppendMissing(after, before, Kind::DeviceAdded, Kind::PortAdded, changes);
    return changes;
}

std::vector<Change> AllPresent(const Snapshot& snapshot) {
    std::vector<Change> changes;
    for (const Device& device : snapshot.devices) {
        changes.push_back({Change::Kind::DevicePresent, device});
    }
    return changes;
}
