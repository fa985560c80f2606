// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_TERMINAL_CALLBACKS_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_TERMINAL_CALLBACKS_H

#include <atomic>

#include "KOVASMgr.h"

/// What the callbacks of the host on real terminals have seen.
struct TerminalNotices {
    std::atomic<int> insertions{0};
    std::atomic<int> pullOuts{0};
    std::atomic<int> bytes{0};      // of the neighbour's port
    std::atomic<int> deliveries{0}; // of the port that goes, counted at their start
    std::atomic<int> lasting{0};    // so long each of them takes, in microseconds

    static TerminalNotices& Get();
};

void OnNotice(_KOVAMGR_DEV_STATE_TYPE_ state);
void OnSecondNotice(_KOVAMGR_DEV_STATE_TYPE_ state); // sees nothing
void OnNeighbourData(void* data, int length);

void OnData(void* data, int length);
void OnSecondData(void* data, int length); // sees nothing

#endif
