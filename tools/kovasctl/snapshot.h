// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SNAPSHOT_H
#define KOVASCTL_SNAPSHOT_H

#include <cstdint>
#include <string>
#include <vector>

struct Port {
    int32_t id = 0;
    std::string name;
    int32_t type = 0;
};

struct Device {
    std::string name;
    std::string text;
    std::vector<Port> ports;
};

/// What was attached at one moment.
struct Snapshot {
    std::vector<Device> devices;
    uint32_t deviceCount = 0; // can exceed the devices listed
};

/// Threads: any, and a device-state callback.
/// @throws Failure
Snapshot TakeSnapshot();

#endif
