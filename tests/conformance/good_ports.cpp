// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "adapters/shared/cancel_shield.h"
#include "tests/conformance/good_adapter.h"
#include "tests/conformance/good_state.h"

namespace good {

namespace {

constexpr const char* kFullPort = "anchor-full";
constexpr const char* kProbePort = "probe-0";
constexpr size_t kRoom = 65536;
constexpr std::chrono::milliseconds kWriteTime{300};

void CloseDescriptor(OpenPort& port) {
    if (port.descriptor >= 0) {
        close(std::exchange(port.descriptor, -1));
    }
}

void DropPort(const std::string& name) {
    State& state = TheState();
    for (auto entry = state.open.begin(); entry != state.open.end();) {
        if (entry->second.name == name) {
            CloseDescriptor(entry->second);
            entry = state.open.erase(entry);
        } else {
            ++entry;
        }
    }
}

// What is told and what is true may differ for a moment; such a port cannot be opened.
bool IsThere(const std::string& name) {
    const State& state = TheState();
    return name != kProbePort || (IsProbeThere() && (state.callback == nullptr || state.answer));
}

OpenPort* Find(int handle) {
    const auto entry = TheState().open.find(handle);
    return entry == TheState().open.end() ? nullptr : &entry->second;
}

size_t Room(const OpenPort& port) {
    return port.name == kFullPort ? kRoom - std::min(kRoom, port.bytes.size()) : SIZE_MAX;
}

} // namespace

bool IsKnownPort(const char* portName) {
    const std::string name = portName;
    return name == "anchor-0" || name == kFullPort || name == kProbePort;
}

bool IsOpen(const char* portName) {
    const Lock lock(TheState().mutex);
    const auto& open = TheState().open;
    return std::any_of(open.begin(), open.end(), [&](const auto& entry) {
        return entry.second.name == portName && !entry.second.isDead;
    });
}

bool IsDead(int handle) {
    const Lock lock(TheState().mutex);
    const OpenPort* port = Find(handle);
    return port != nullptr && port->isDead;
}

bool IsTaken(int handle) { return Find(handle) != nullptr; }

void KillPort(const std::string& name) {
    for (auto& entry : TheState().open) {
        if (entry.second.name == name) {
            entry.second.isDead = true;
            if (ClosesDescriptorAtDeath()) {
                CloseDescriptor(entry.second);
            }
        }
    }
}

void ReclaimPorts() {
    if (ReclaimsOpenPorts()) {
        for (auto& entry : TheState().open) {
            entry.second.isDead = true;
            CloseDescriptor(entry.second);
        }
    }
}

int Open(const char* portName, int* handle) {
    if (portName == nullptr || handle == nullptr || !IsKnownPort(portName)) {
        return OS_ADAPT_FAILED;
    }
    const CancelShield shield;
    State& state = TheState();
    const Lock lock(state.mutex);
    if (!IsThere(portName)) {
        return OS_ADAPT_FAILED;
    }
    state.lastHandle = NextHandle(state.lastHandle);
    if (DropsOldHandle()) {
        DropPort(portName);
    }
    state.open[state.lastHandle] =
        OpenPort{portName, "", open("/dev/null", O_RDWR | O_CLOEXEC), false, false};
    *handle = state.lastHandle;
    return OS_ADAPT_OK;
}

int Close(int handle) {
    const CancelShield shield;
    const Lock lock(TheState().mutex);
    OpenPort* port = Find(handle);
    if (port == nullptr) {
        return OS_ADAPT_FAILED;
    }
    CloseDescriptor(*port);
    TheState().open.erase(handle);
    return OS_ADAPT_OK;
}

// The port is looked up again after each wait: it may have gone meanwhile.
int Write(int handle, const void* data, long length, long* written) {
    if (data == nullptr || length < 0 || written == nullptr) {
        return OS_ADAPT_FAILED;
    }
    const auto deadline = std::chrono::steady_clock::now() + kWriteTime;
    Lock lock(TheState().mutex);
    for (;;) {
        OpenPort* port = Find(handle);
        if (port == nullptr || port->isDead) {
            return OS_ADAPT_FAILED;
        }
        const size_t taken = std::min(static_cast<size_t>(length), Room(*port));
        port->bytes.append(static_cast<const char*>(data), taken);
        if (taken > 0 || length == 0 || std::chrono::steady_clock::now() >= deadline) {
            *written = static_cast<long>(taken);
            return OS_ADAPT_OK;
        }
        TheState().changed.WaitUntil(lock, deadline);
    }
}

int Read(int handle, void* buffer, long size, long* read) {
    if (buffer == nullptr || size <= 0 || read == nullptr) {
        return OS_ADAPT_FAILED;
    }
    const Lock lock(TheState().mutex);
    OpenPort* port = Find(handle);
    if (port == nullptr || (port->isDead && !std::exchange(port->isDeathTold, true))) {
        return OS_ADAPT_FAILED;
    }
    const bool hasBytes = !port->isDead && port->name != kFullPort;
    const size_t count = hasBytes ? std::min(static_cast<size_t>(size), port->bytes.size()) : 0;
    std::copy_n(port->bytes.begin(), count, static_cast<char*>(buffer));
    port->bytes.erase(0, count);
    *read = static_cast<long>(count);
    return OS_ADAPT_OK;
}

} // namespace good
