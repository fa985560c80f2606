// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/terminals.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include "KOVASMgr.h"

namespace fs = std::filesystem;

std::size_t TerminalDescriptors() {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code isGone; // as the directory being read is, afterwards
        const std::string target = fs::read_symlink(entry.path(), isGone);
        count += target.rfind("/dev/pt", 0) == 0 ? 1 : 0;
    }
    return count;
}

int IdOf(const std::string& portName) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    KOVAMGR_EnumeratePortInfo(list.get());
    for (uint32_t device = 0; device < list->nDeviceCount; ++device) {
        for (uint32_t port = 0; port < list->stDevice[device].nPortCount; ++port) {
            if (portName == list->stDevice[device].stPort[port].szPortName) {
                return list->stDevice[device].stPort[port].nPortID;
            }
        }
    }
    return -1;
}

int Enumerate(PortsOfDevices& devices) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    const int result = KOVAMGR_EnumeratePortInfo(list.get());
    devices.clear();
    for (uint32_t device = 0; device < list->nDeviceCount; ++device) {
        auto& ports = devices[list->stDevice[device].szDeviceName];
        for (uint32_t port = 0; port < list->stDevice[device].nPortCount; ++port) {
            ports.insert(list->stDevice[device].stPort[port].szPortName);
        }
    }
    return result;
}
