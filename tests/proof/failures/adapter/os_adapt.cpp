// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <iterator>

#include "OSAdapt.h"
#include "tests/proof/failures/steered_adapter.h"

namespace {

SteeredState& State() { return g_SteeredAdapter; }

// The port that is open by this handle; kSteeredPorts when there is none.
std::size_t PortOf(int handle) {
    const auto found = std::find(State().handles.begin(), State().handles.end(), handle);
    if (found == State().handles.end() || handle == 0) {
        ++State().strayCalls;
        return kSteeredPorts;
    }
    return static_cast<std::size_t>(found - State().handles.begin());
}

void Attach(_OS_ADAPT_DEVICEPORTLIST& list, const char* name, SteeredPort from, SteeredPort to) {
    _OS_ADAPT_DEVICEPORTINFO& device = list.stDevice[list.nDeviceCount++];
    std::strcpy(device.szDeviceName, name);
    std::strcpy(device.szDeviceText, "a text that does not fit into a string's own place");
    for (int port = from; port <= to; ++port) {
        std::strcpy(device.stPort[device.nPortCount++].szPortName, kPortNames[port]);
    }
}

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    const int result = PassAdapterCall();
    if (result == OS_ADAPT_OK) {
        State().callback = cb;
    }
    return result;
}

// Forgets the callback however the call ends: nobody notifies a manager that has gone.
int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    State().callback = nullptr;
    return PassAdapterCall();
}

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    const int result = PassAdapterCall();
    for (std::size_t port = 0; result == OS_ADAPT_OK && port < kSteeredPorts; ++port) {
        if (std::strcmp(portName, kPortNames[port]) == 0) {
            *handle = ++State().lastHandle;
            State().handles[port] = *handle;
        }
    }
    return result;
}

int OS_ADAPT_ClosePort(int handle) {
    const std::size_t port = PortOf(handle);
    if (port == kSteeredPorts) {
        return OS_ADAPT_FAILED;
    }
    State().isCloseRefused[port] = true; // also when it ends by an exception
    const int result = PassAdapterCall();
    if (result == OS_ADAPT_OK) {
        State().isCloseRefused[port] = false;
        State().handles[port] = 0;
    }
    return result;
}

int OS_ADAPT_Write(int handle, const void*, long length, long* written) {
    PortOf(handle);
    const int result = PassAdapterCall();
    if (result == OS_ADAPT_OK) {
        *written = length;
    }
    return result;
}

int OS_ADAPT_Read(int handle, void* buffer, long, long* read) {
    PortOf(handle);
    ++State().reads;
    const int result = PassAdapterRead();
    if (result == OS_ADAPT_OK) {
        std::memcpy(buffer, "bytes", 5);
        *read = 5;
    }
    return result;
}

int OS_ADAPT_EnumDevicePortInfo(int, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = PassAdapterCall();
    if (result == OS_ADAPT_OK) {
        Attach(*list, "the resident, a device that stays", kFirstPort, kSecondPort);
        if (State().isGuestAttached) {
            Attach(*list, "the guest, a device that comes and goes", kGuestPort, kGuestPort);
        }
    }
    return result;
}
