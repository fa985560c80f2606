// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_DEVICES_HPP
#define KOVASMGR_DEVICES_HPP

#include <KOVASMgr.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kovasmgr {
inline namespace v1 {

struct PortInfo {
    int id = -1; ///< what Library::Open takes; another one after the device was away
    std::string name;
    int type = KOVAMGR_PORT_TYPE_COMM;

    friend bool operator==(const PortInfo& a, const PortInfo& b) {
        return a.id == b.id && a.name == b.name;
    }
    friend bool operator!=(const PortInfo& a, const PortInfo& b) { return !(a == b); }
};

struct Device {
    std::string name;            ///< unique
    std::string text;            ///< what the adapter says of it
    std::vector<PortInfo> ports; ///< in the device's order
};

/// What was attached at one moment.
struct Snapshot {
    std::vector<Device> devices; ///< in order of arrival, at most KOVAMGR_MAX_DEVICES
    std::size_t present = 0;     ///< how many there are; may exceed those that are listed

    std::optional<Device> FindDevice(std::string_view name) const {
        for (const Device& device : devices) {
            if (device.name == name) {
                return device;
            }
        }
        return std::nullopt;
    }

    /// The port of this name, of whatever device.
    std::optional<PortInfo> FindPort(std::string_view name) const {
        for (const Device& device : devices) {
            for (const PortInfo& port : device.ports) {
                if (port.name == name) {
                    return port;
                }
            }
        }
        return std::nullopt;
    }
};

/// What lies between two snapshots. A device that was away in between, all its ports having new
/// identifiers, is in both of the first two lists.
struct Changes {
    std::vector<Device> came;      ///< whole
    std::vector<Device> went;      ///< as they were
    std::vector<Device> portsCame; ///< devices that stay, with only those ports that came
    std::vector<Device> portsWent; ///< devices that stay, with only those ports that went

    bool Empty() const {
        return came.empty() && went.empty() && portsCame.empty() && portsWent.empty();
    }
};

namespace detail {

inline bool HasPort(const Device& device, const PortInfo& port) {
    return std::find(device.ports.begin(), device.ports.end(), port) != device.ports.end();
}

// A device stays when a port of it does.
inline const Device* FindSame(const Snapshot& snapshot, const Device& device) {
    for (const Device& other : snapshot.devices) {
        if (other.name == device.name &&
            std::any_of(other.ports.begin(), other.ports.end(),
                        [&](const PortInfo& port) { return HasPort(device, port); })) {
            return &other;
        }
    }
    return nullptr;
}

// What is in one snapshot and not in the other: whole devices, and ports of the others.
inline void Subtract(const Snapshot& from, const Snapshot& what, std::vector<Device>& devices,
                     std::vector<Device>& ports) {
    for (const Device& device : from.devices) {
        const Device* const same = FindSame(what, device);
        if (same == nullptr) {
            devices.push_back(device);
            continue;
        }
        Device rest{device.name, device.text, {}};
        std::copy_if(device.ports.begin(), device.ports.end(), std::back_inserter(rest.ports),
                     [&](const PortInfo& port) { return !HasPort(*same, port); });
        if (!rest.ports.empty()) {
            ports.push_back(std::move(rest));
        }
    }
}

inline Device DeviceOf(const _KOVAMGR_DEVICEINFO& record) {
    Device device{record.szDeviceName, record.szDeviceText, {}};
    for (std::size_t i = 0; i < std::min<std::size_t>(record.nPortCount, KOVAMGR_MAX_PORTS); ++i) {
        const _KOVAMGR_PORTINFO& port = record.stPort[i];
        device.ports.push_back({port.nPortID, port.szPortName, port.nPortType});
    }
    return device;
}

inline Snapshot SnapshotOf(const _KOVAMGR_DEVICEINFOLIST& list) {
    Snapshot snapshot;
    snapshot.present = list.nDeviceCount;
    for (std::size_t i = 0; i < std::min<std::size_t>(snapshot.present, KOVAMGR_MAX_DEVICES); ++i) {
        snapshot.devices.push_back(DeviceOf(list.stDevice[i]));
    }
    return snapshot;
}

} // namespace detail

/// What came and what went from one snapshot to a later one.
inline Changes Difference(const Snapshot& before, const Snapshot& after) {
    Changes changes;
    detail::Subtract(after, before, changes.came, changes.portsCame);
    detail::Subtract(before, after, changes.went, changes.portsWent);
    return changes;
}

} // namespace v1
} // namespace kovasmgr

#endif
