// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>

#include "adapters/shared/cancel_shield.h"
#include "tests/conformance/good_adapter.h"
#include "tests/conformance/good_state.h"

namespace good {

namespace {

constexpr std::chrono::milliseconds kLook{2};

thread_local bool t_IsInside = false;

void TellChange(Lock& lock) {
    State& state = TheState();
    const OS_ADAPT_STATUS_CALLBACK callback = state.callback;
    state.answer = !state.answer;
    state.telling = state.answer ? OS_ADAPT_DEVICE_INSERT : OS_ADAPT_DEVICE_PULLOUT;
    state.isTelling = true;
    if (!state.answer) {
        KillPort("probe-0");
    }
    lock.unlock();
    t_IsInside = true;
    Tell(callback, state.telling);
    t_IsInside = false;
    lock.lock();
    state.isTelling = false;
    if (!SeesChangesDuringNotice()) {
        state.answer = IsProbeThere();
    }
    state.changed.NotifyAll();
}

void* Run(void*) {
    const CancelShield shield;
    State& state = TheState();
    Lock lock(state.mutex);
    while (!state.isToStop) {
        if (IsProbeThere() != state.answer) {
            TellChange(lock);
        } else {
            state.changed.WaitUntil(lock, std::chrono::steady_clock::now() + kLook);
        }
    }
    state.isRunning = false;
    state.changed.NotifyAll();
    return nullptr;
}

// With the lock held; the thread has left its loop, or there is none.
void Join(State& state) {
    if (state.isStarted) {
        pthread_join(state.thread, nullptr);
        state.isStarted = false;
    }
}

int Start(State& state) {
    Join(state);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, StackSize());
    const int error = pthread_create(&state.thread, &attributes, Run, nullptr);
    pthread_attr_destroy(&attributes);
    state.isStarted = error == 0;
    state.isRunning = state.isStarted;
    return error == 0 ? OS_ADAPT_OK : OS_ADAPT_FAILED;
}

__attribute__((destructor)) void Unload() { UnRegister(); }

} // namespace

State& TheState() {
    static State state;
    return state;
}

bool IsProbeThere() {
    const char* devices = std::getenv("CONFORMANCE_DEVICES");
    return devices == nullptr || access((std::string(devices) + "/probe").c_str(), F_OK) == 0;
}

bool IsTelling(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    const Lock lock(TheState().mutex);
    return TheState().isTelling && TheState().telling == status;
}

bool IsInsideNotice(_OS_ADAPT_DEVICESTATUS_TYPE status) { return t_IsInside && IsTelling(status); }

int Register(OS_ADAPT_STATUS_CALLBACK callback) {
    if (callback == nullptr) {
        return OS_ADAPT_FAILED;
    }
    const CancelShield shield;
    State& state = TheState();
    const Lock lock(state.mutex);
    const bool isFirst = state.callback == nullptr;
    state.callback = callback;
    state.isToStop = false;
    if (isFirst && (!state.hasAnswered || !RemembersLastAnswer())) {
        state.answer = IsProbeThere();
    }
    return state.isRunning ? OS_ADAPT_OK : Start(state);
}

int UnRegister() {
    const CancelShield shield;
    State& state = TheState();
    Lock lock(state.mutex);
    state.callback = nullptr;
    state.isToStop = true;
    state.hasAnswered = false;
    state.changed.NotifyAll();
    const bool isItself = state.isRunning && pthread_equal(state.thread, pthread_self()) != 0;
    if ((isItself && KnowsItself()) || (state.isTelling && !WaitsForNotice())) {
        return OS_ADAPT_OK;
    }
    while (state.isRunning && state.isToStop) {
        state.changed.Wait(lock);
    }
    if (!state.isRunning) {
        Join(state);
        ReclaimPorts();
    }
    return OS_ADAPT_OK;
}

int Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    if (which != OS_ADAPT_ENUM_ALL || list == nullptr) {
        return OS_ADAPT_FAILED;
    }
    State& state = TheState();
    const Lock lock(state.mutex);
    if (state.callback == nullptr && !state.isTelling) {
        state.answer = IsProbeThere();
    }
    state.hasAnswered = true;
    Fill(*list, state.answer);
    return OS_ADAPT_OK;
}

void Fill(_OS_ADAPT_DEVICEPORTLIST& list, bool isProbeThere) {
    Add(list, "anchor", "anchor-0");
    _OS_ADAPT_DEVICEPORTINFO& anchor = list.stDevice[0];
    anchor.nPortCount = 2;
    anchor.stPort[0].nPortID = 7;
    std::strcpy(anchor.stPort[1].szPortName, "anchor-full");
    if (isProbeThere) {
        Add(list, "probe", "probe-0");
    }
}

void Add(_OS_ADAPT_DEVICEPORTLIST& list, const char* deviceName, const char* portName) {
    _OS_ADAPT_DEVICEPORTINFO& device = list.stDevice[list.nDeviceCount++];
    std::strcpy(device.szDeviceName, deviceName);
    std::strcpy(device.szDeviceText, "for the tests");
    if (portName != nullptr) {
        device.nPortCount = 1;
        std::strcpy(device.stPort[0].szPortName, portName);
    }
}

} // namespace good
