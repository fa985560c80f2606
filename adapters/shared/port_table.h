// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_PORT_TABLE_H
#define KOVASMGR_ADAPTERS_PORT_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "OSAdapt.h"

struct PortEntry {
    std::string name;
    int32_t proposedId = 0; // 0: the manager numbers the port
    uint64_t arrival = 0;   // a new number for every arrival, so that a port that went and came
                            // back under its name is told from one that stayed
};

struct DeviceEntry {
    std::string name;
    std::string text;
    std::vector<PortEntry> ports;
};

/// What is attached at one moment. Devices without ports are left out.
using PortTable = std::vector<DeviceEntry>;

size_t CountPorts(const PortTable& table);

/// The ports of an earlier table that are still the same device's in a later one, in the earlier
/// order; devices that kept none are left out.
PortTable CommonPart(const PortTable& earlier, const PortTable& later);

/// Writes a table into a zeroed list, as far as the list's limits allow; texts are cut to their
/// arrays and terminated.
void FillList(const PortTable& table, _OS_ADAPT_DEVICEPORTLIST& list);

#endif
