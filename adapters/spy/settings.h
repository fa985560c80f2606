// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_SETTINGS_H
#define KOVASMGR_ADAPTERS_SPY_SETTINGS_H

#include <string>

/// What the variables of the environment say; README.md describes them.
struct Settings {
    std::string adapter;      // KOVASMGR_SPY_ADAPTER
    std::string record;       // KOVASMGR_SPY_RECORD; empty: no recording
    std::string capture;      // KOVASMGR_SPY_PCAP; empty: none
    std::string faults;       // KOVASMGR_SPY_FAULTS
    bool hasIdleReads = true; // KOVASMGR_SPY_IDLE_READS
    bool hasStats = true;     // KOVASMGR_SPY_STATS
};

/// Reads them; a process with raised privileges has none. What cannot be meant has a line in the
/// log and its default.
Settings ReadSettings();

#endif
