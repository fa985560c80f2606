// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_CONFORMANCE_GOOD_STATE_H
#define KOVASMGR_TESTS_CONFORMANCE_GOOD_STATE_H

#include <pthread.h>

#include <map>
#include <mutex>
#include <string>

#include "OSAdapt.h"
#include "adapters/shared/condition.h"

namespace good {

struct OpenPort {
    std::string name;
    std::string bytes;   // written, and not read yet
    int descriptor = -1; // of a node, as adapters of devices have one
    bool isDead = false;
    bool isDeathTold = false;
};

struct State {
    std::mutex mutex; // guards everything below
    Condition changed;

    std::map<int, OpenPort> open;
    int lastHandle = 0;

    OS_ADAPT_STATUS_CALLBACK callback = nullptr;
    pthread_t thread{};
    bool isStarted = false; // and not joined
    bool isRunning = false; // in its loop
    bool isToStop = false;
    bool isTelling = false;
    _OS_ADAPT_DEVICESTATUS_TYPE telling = OS_ADAPT_DEVICE_INSERT;

    bool hasAnswered = false;
    bool answer = false; // whether the probe is there, as last answered or told
};

using Lock = std::unique_lock<std::mutex>;

State& TheState();

// With the lock held.
void KillPort(const std::string& name);
void ReclaimPorts();

} // namespace good

#endif
