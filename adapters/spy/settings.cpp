// SPDX-License-Identifier: MIT
#include "adapters/spy/settings.h"

#include <stdlib.h>

#include "adapters/shared/adapter_log.h"

namespace {

std::string Variable(const char* name) {
    const char* const value = secure_getenv(name);
    return value == nullptr ? "" : value;
}

// The host's current directory is the adapter's, and may change.
std::string FileName(const char* name) {
    std::string value = Variable(name);
    if (value.empty() || value.front() == '/') {
        return value;
    }
    LogError(std::string(name) + " must be an absolute path, not '" + Printable(value) +
             "'; nothing is written");
    return "";
}

bool IsOn(const char* name) {
    const std::string value = Variable(name);
    if (!value.empty() && value != "on" && value != "off") {
        LogError(std::string(name) + " must be on or off, not '" + Printable(value) +
                 "'; it is taken as on");
    }
    return value != "off";
}

} // namespace

Settings ReadSettings() {
    Settings settings;
    settings.adapter = Variable("KOVASMGR_SPY_ADAPTER");
    settings.record = FileName("KOVASMGR_SPY_RECORD");
    settings.capture = FileName("KOVASMGR_SPY_PCAP");
    settings.faults = Variable("KOVASMGR_SPY_FAULTS");
    settings.hasIdleReads = IsOn("KOVASMGR_SPY_IDLE_READS");
    settings.hasStats = IsOn("KOVASMGR_SPY_STATS");
    return settings;
}
