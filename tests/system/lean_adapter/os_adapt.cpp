// SPDX-License-Identifier: MIT
//
// An adapter that allocates nothing: what a thread allocates while it is inside was allocated by
// somebody else. It has two ports: GOOD always has data, BAD fails every read.
#include <atomic>
#include <cstring>

#include "OSAdapt.h"

namespace {

constexpr int kGood = 1;
constexpr int kBad = 2;

std::atomic<OS_ADAPT_STATUS_CALLBACK> s_Callback{nullptr};

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    s_Callback = cb;
    return OS_ADAPT_OK;
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    s_Callback = nullptr;
    return OS_ADAPT_OK;
}

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    *handle = std::strcmp(portName, "GOOD") == 0 ? kGood : kBad;
    return OS_ADAPT_OK;
}

int OS_ADAPT_ClosePort(int) { return OS_ADAPT_OK; }

int OS_ADAPT_Write(int, const void*, long length, long* written) {
    *written = length;
    return OS_ADAPT_OK;
}

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    if (handle == kBad) {
        return OS_ADAPT_FAILED;
    }
    std::memset(buffer, 'x', static_cast<std::size_t>(size));
    *read = size;
    return OS_ADAPT_OK;
}

int OS_ADAPT_EnumDevicePortInfo(int, _OS_ADAPT_DEVICEPORTLIST* list) {
    list->nDeviceCount = 1;
    _OS_ADAPT_DEVICEPORTINFO& device = list->stDevice[0];
    std::strcpy(device.szDeviceName, "Lean");
    device.nPortCount = 2;
    std::strcpy(device.stPort[0].szPortName, "GOOD");
    std::strcpy(device.stPort[1].szPortName, "BAD");
    return OS_ADAPT_OK;
}
