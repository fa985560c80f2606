// SPDX-License-Identifier: MIT
//
// An adapter that does as little as the contract allows: what is measured is what the manager adds.
#include "bench/null_adapter.h"

#include <chrono>
#include <cstdio>

namespace {
int g_Devices = 0;
int g_PortsEach = 0;
int g_LastHandle = 0;
double g_SecondsInside = 0;
} // namespace

extern "C" {

void NullAdapter_SetTable(int devices, int portsEach) {
    g_Devices = devices;
    g_PortsEach = portsEach;
}

double NullAdapter_SecondsInside(void) { return g_SecondsInside; }

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) { return OS_ADAPT_OK; }

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) { return OS_ADAPT_OK; }

int OS_ADAPT_OpenPort(const char*, int* handle) {
    *handle = ++g_LastHandle;
    return OS_ADAPT_OK;
}

int OS_ADAPT_ClosePort(int) { return OS_ADAPT_OK; }

int OS_ADAPT_Write(int, const void*, long length, long* written) {
    *written = length;
    return OS_ADAPT_OK;
}

int OS_ADAPT_Read(int, void*, long, long* read) {
    *read = 0;
    return OS_ADAPT_OK;
}

int OS_ADAPT_EnumDevicePortInfo(int, _OS_ADAPT_DEVICEPORTLIST* list) {
    const auto start = std::chrono::steady_clock::now();
    list->nDeviceCount = g_Devices;
    for (int d = 0; d < g_Devices; ++d) {
        _OS_ADAPT_DEVICEPORTINFO& device = list->stDevice[d];
        std::snprintf(device.szDeviceName, sizeof device.szDeviceName, "device%d", d + 1);
        std::snprintf(device.szDeviceText, sizeof device.szDeviceText, "a device of no kind");
        device.nPortCount = g_PortsEach;
        for (int p = 0; p < g_PortsEach; ++p) {
            std::snprintf(device.stPort[p].szPortName, sizeof device.stPort[p].szPortName, "port%d",
                          d * g_PortsEach + p + 1);
        }
    }
    g_SecondsInside +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return OS_ADAPT_OK;
}

} // extern "C"
