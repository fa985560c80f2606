// SPDX-License-Identifier: MIT
#include "tools/kovasctl/snapshot.h"

#include <algorithm>
#include <memory>

#include "KOVASMgr.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/result_code.h"

namespace {

Device ToDevice(const _KOVAMGR_DEVICEINFO& record) {
    Device device{record.szDeviceName, record.szDeviceText, {}};
    for (uint32_t p = 0; p < std::min<uint32_t>(record.nPortCount, KOVAMGR_MAX_PORTS); ++p) {
        const _KOVAMGR_PORTINFO& port = record.stPort[p];
        device.ports.push_back({port.nPortID, port.szPortName, port.nPortType});
    }
    return device;
}

} // namespace

Snapshot TakeSnapshot() {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>(); // too large for a stack
    const int result = KOVAMGR_EnumeratePortInfo(list.get());
    if (result != KOVAMGR_OK) {
        throw Failure("devices cannot be listed: " + ResultCodeText(result));
    }
    Snapshot snapshot;
    snapshot.deviceCount = list->nDeviceCount;
    for (uint32_t d = 0; d < std::min<uint32_t>(list->nDeviceCount, KOVAMGR_MAX_DEVICES); ++d) {
        snapshot.devices.push_back(ToDevice(list->stDevice[d]));
    }
    return snapshot;
}
