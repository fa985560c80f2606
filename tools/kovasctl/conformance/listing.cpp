// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/listing.h"

#include <algorithm>

int DeviceCount(const _OS_ADAPT_DEVICEPORTLIST& list) {
    return std::clamp<int>(list.nDeviceCount, 0, OS_ADAPT_MAX_DEVICES);
}

int PortCount(const _OS_ADAPT_DEVICEPORTINFO& device) {
    return std::clamp<int>(device.nPortCount, 0, OS_ADAPT_MAX_PORTS);
}

Listing ToListing(const _OS_ADAPT_DEVICEPORTLIST& list) {
    Listing listing;
    for (int d = 0; d < DeviceCount(list); ++d) {
        const _OS_ADAPT_DEVICEPORTINFO& device = list.stDevice[d];
        for (int p = 0; p < PortCount(device); ++p) {
            listing.emplace(TextIn(device.szDeviceName), TextIn(device.stPort[p].szPortName));
        }
    }
    return listing;
}

std::string Missing(const Listing& first, const Listing& second) {
    std::string names;
    for (const auto& port : first) {
        if (second.count(port) == 0) {
            names += (names.empty() ? "'" : ", '") + port.second + "'";
        }
    }
    return names;
}

bool HasPort(const Listing& listing, const std::string& portName) {
    return std::any_of(listing.begin(), listing.end(),
                       [&](const auto& port) { return port.second == portName; });
}
