// SPDX-License-Identifier: MIT
#include "tests/proof/fuzz/container_rules.h"

#include <cstring>
#include <map>
#include <set>
#include <string>

#include "tests/proof/fuzz/fuzz_input.h"
#include "tests/proof/fuzz/listed_adapter.h"

namespace {

template <size_t size> std::string Bounded(const char (&text)[size]) {
    return std::string(text, strnlen(text, size - 1));
}

template <size_t size> bool IsTerminated(const char (&text)[size]) {
    return strnlen(text, size) < size;
}

bool IsSame(const _PORT_& one, const _PORT_& other) {
    return one.nPortID == other.nPortID && one.nPortType == other.nPortType &&
           one.strPortName == other.strPortName && one.strDeviceName == other.strDeviceName &&
           one.strDeviceText == other.strDeviceText && one.hPort == other.hPort;
}

int Clamped(int count, int most) { return count < 0 ? 0 : std::min(count, most); }

/// What the list has of each port's name first, as the record that it makes.
std::map<std::string, _PORT_> FirstOfEachName(const _OS_ADAPT_DEVICEPORTLIST& list) {
    std::map<std::string, _PORT_> listed;
    for (int d = 0; d < Clamped(list.nDeviceCount, OS_ADAPT_MAX_DEVICES); ++d) {
        const _OS_ADAPT_DEVICEPORTINFO& device = list.stDevice[d];
        for (int p = 0; p < Clamped(device.nPortCount, OS_ADAPT_MAX_PORTS); ++p) {
            _PORT_ port;
            port.nPortID = device.stPort[p].nPortID;
            port.strPortName = Bounded(device.stPort[p].szPortName);
            port.strDeviceName = Bounded(device.szDeviceName);
            port.strDeviceText = Bounded(device.szDeviceText);
            listed.insert({port.strPortName, port});
        }
    }
    return listed;
}

void CheckPort(const _PORT_& port) {
    Demand(port.strPortName.size() < OS_ADAPT_PORT_NAME_SIZE, "a port's name fits its array");
    Demand(port.strDeviceName.size() < OS_ADAPT_DEVICE_TEXT_SIZE, "a device's name fits its array");
    Demand(port.strDeviceText.size() < OS_ADAPT_DEVICE_TEXT_SIZE, "a device's text fits its array");
    Demand(port.strPortName.find('\0') == std::string::npos, "a name ends at its terminator");
    Demand(port.nPortType == KOVAMGR_PORT_TYPE_COMM, "all ports are of one kind");
}

void CheckDevice(const _COMM_MGR_DEVICE_INFO_& device) {
    Demand(!device.vecPorts.empty(), "a device in the tree has a port");
    Demand(IsTerminated(device.szDeviceName), "a device's name is terminated");
    Demand(IsTerminated(device.szDeviceText), "a device's text is terminated");
    for (const _PORT_& port : device.vecPorts) {
        CheckPort(port);
        Demand(port.strDeviceName == device.szDeviceName, "a port stands under its own device");
        Demand(port.hPort == OS_ADAPT_NO_HANDLE, "the tree has no handles");
    }
}

/// The entries that are not used are zero.
template <typename Entry> bool IsZero(const Entry& entry) {
    static const Entry kZero = {};
    return std::memcmp(&entry, &kZero, sizeof entry) == 0;
}

void CheckEntry(const _KOVAMGR_DEVICEINFO& entry, const _COMM_MGR_DEVICE_INFO_& device) {
    const size_t count = std::min<size_t>(device.vecPorts.size(), KOVAMGR_MAX_PORTS);
    Demand(entry.nPortCount == count, "a host is told of up to 16 ports of a device");
    Demand(std::strcmp(entry.szDeviceName, device.szDeviceName) == 0, "a device has its name");
    Demand(std::strcmp(entry.szDeviceText, device.szDeviceText) == 0, "a device has its text");
    for (size_t p = 0; p < count; ++p) {
        Demand(entry.stPort[p].szPortName == device.vecPorts[p].strPortName, "a port has its name");
        Demand(entry.stPort[p].nPortID == device.vecPorts[p].nPortID, "a port has its number");
    }
    for (size_t p = count; p < KOVAMGR_MAX_PORTS; ++p) {
        Demand(IsZero(entry.stPort[p]), "unused entries of ports are zero");
    }
}

} // namespace

bool HasUniqueNumbers(const Ports& ports) {
    std::set<int> numbers;
    for (const _PORT_& port : ports) {
        if (!numbers.insert(port.nPortID).second) {
            return false;
        }
    }
    return true;
}

void CheckPorts(const Ports& ports) {
    std::set<std::string> names;
    for (const _PORT_& port : ports) {
        CheckPort(port);
        Demand(names.insert(port.strPortName).second, "a port's name is there once");
        Demand(port.hPort == OS_ADAPT_NO_HANDLE || ListedAdapter::IsOpen(port.hPort),
               "a port's handle is open");
    }
}

void CheckTree(const Devices& devices, const Ports& ports, bool areNumbersUnique) {
    std::map<std::string, const _PORT_*> prepared;
    for (const _PORT_& port : ports) {
        prepared[port.strPortName] = &port;
    }
    std::set<std::string> names;
    size_t copies = 0;
    for (const _COMM_MGR_DEVICE_INFO_& device : devices) {
        CheckDevice(device);
        Demand(names.insert(device.szDeviceName).second, "a device's name is there once");
        for (const _PORT_& copy : device.vecPorts) {
            const auto port = prepared.find(copy.strPortName);
            Demand(port != prepared.end(), "each port of the tree is a prepared one, once");
            Demand(copy.nPortID == port->second->nPortID, "both copies have one number");
            Demand(copy.strDeviceName == port->second->strDeviceName, "both have one device");
            prepared.erase(port);
            ++copies;
        }
    }
    Demand(!areNumbersUnique || copies == ports.size(), "each prepared port is in the tree");
}

void CheckList(const _KOVAMGR_DEVICEINFOLIST& list, const Devices& devices) {
    const size_t count = std::min<size_t>(devices.size(), KOVAMGR_MAX_DEVICES);
    Demand(list.nDeviceCount == devices.size(), "a host is told how many devices there are");
    for (size_t d = 0; d < count; ++d) {
        CheckEntry(list.stDevice[d], devices[d]);
    }
    for (size_t d = count; d < KOVAMGR_MAX_DEVICES; ++d) {
        Demand(IsZero(list.stDevice[d]), "unused entries of devices are zero");
    }
}

void CheckArrival(const Ports& before, const Ports& after, const _OS_ADAPT_DEVICEPORTLIST& list) {
    Demand(after.size() >= before.size(), "an arrival removes no port");
    std::map<std::string, _PORT_> listed = FirstOfEachName(list);
    for (size_t i = 0; i < before.size(); ++i) {
        Demand(IsSame(before[i], after[i]), "an arrival changes no port");
        listed.erase(before[i].strPortName);
    }
    Demand(after.size() == before.size() + listed.size(), "an arrival adds each new name once");
    for (size_t i = before.size(); i < after.size(); ++i) {
        const auto entry = listed.find(after[i].strPortName);
        Demand(entry != listed.end(), "an arrival adds what is listed");
        if (entry->second.nPortID == 0) {
            entry->second.nPortID = after[i].nPortID; // the manager's choice
        }
        Demand(IsSame(after[i], entry->second), "a new port is as it is listed first");
    }
}

void CheckRemoval(const Ports& before, const Ports& after) {
    size_t old = 0;
    for (const _PORT_& port : after) {
        while (old < before.size() && !IsSame(before[old], port)) {
            ++old;
        }
        Demand(old < before.size(), "a removal leaves ports as they are and in their order");
        ++old;
    }
}

void CheckUnchanged(const Ports& before, const Ports& after) {
    Demand(before.size() == after.size(), "no port comes or goes");
    CheckRemoval(before, after);
}
