// SPDX-License-Identifier: MIT
#include "tests/simulator/host_ports.h"

#include <array>
#include <cstdio>
#include <memory>
#include <mutex>

#include "KOVASMgr.h"

namespace {

constexpr size_t kMostPorts = 8;

struct ListenedPort {
    std::string name;
    std::string received;
};

std::mutex s_Mutex;
std::array<ListenedPort, kMostPorts> s_Ports; // guarded by s_Mutex

// A callback is not told which port it is called for.
template <size_t Slot> void OnData(void* data, int length) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    s_Ports[Slot].received.append(static_cast<const char*>(data), static_cast<size_t>(length));
}

constexpr KOVAMGR_READ_CALLBACK kCallbacks[kMostPorts] = {
    OnData<0>, OnData<1>, OnData<2>, OnData<3>, OnData<4>, OnData<5>, OnData<6>, OnData<7>};

std::unique_ptr<_KOVAMGR_DEVICEINFOLIST> List() {
    auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    KOVAMGR_EnumeratePortInfo(list.get());
    return list;
}

size_t SlotOf(const std::string& name) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    size_t slot = 0;
    while (slot < kMostPorts && !s_Ports[slot].name.empty() && s_Ports[slot].name != name) {
        ++slot;
    }
    if (slot < kMostPorts) {
        s_Ports[slot].name = name;
    }
    return slot;
}

std::string Printed(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        char escaped[8] = "";
        const auto value = static_cast<unsigned char>(byte);
        const bool isPlain = value >= 0x20 && value < 0x7f && byte != '\\';
        std::snprintf(escaped, sizeof escaped, isPlain ? "%c" : "\\x%02x", value);
        text += escaped;
    }
    return text;
}

} // namespace

int PortNumber(const std::string& name) {
    const auto list = List();
    for (uint32_t d = 0; d < list->nDeviceCount && d < KOVAMGR_MAX_DEVICES; ++d) {
        for (uint32_t p = 0; p < list->stDevice[d].nPortCount; ++p) {
            if (list->stDevice[d].stPort[p].szPortName == name) {
                return list->stDevice[d].stPort[p].nPortID;
            }
        }
    }
    return -1;
}

std::pair<size_t, size_t> Listed() {
    const auto list = List();
    size_t ports = 0;
    for (const _KOVAMGR_DEVICEINFO& device : list->stDevice) {
        ports += device.nPortCount;
    }
    return {list->nDeviceCount, ports};
}

bool Listen(const std::string& name) {
    const size_t slot = SlotOf(name);
    return slot < kMostPorts &&
           KOVAMGR_RegisterCommDataReadCallback(kCallbacks[slot], PortNumber(name)) == KOVAMGR_OK;
}

std::string Received(const std::string& name) {
    const size_t slot = SlotOf(name);
    const std::lock_guard<std::mutex> lock(s_Mutex);
    return slot < kMostPorts ? s_Ports[slot].received : "";
}

void PrintReceived() {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    for (const ListenedPort& port : s_Ports) {
        if (!port.name.empty()) {
            std::printf("%s: %s\n", port.name.c_str(), Printed(port.received).c_str());
        }
    }
}
