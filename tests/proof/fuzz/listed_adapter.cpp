// SPDX-License-Identifier: MIT
#include "tests/proof/fuzz/listed_adapter.h"

#include <cstdio>
#include <memory>
#include <set>

#include "manager/osadapt_binding.h"
#include "tests/proof/fuzz/fuzz_input.h"

namespace {

using ListedAdapter::Mood;

constexpr int kFirstHandle = 1000;

struct State {
    _OS_ADAPT_DEVICEPORTLIST list = {};
    Mood mood = Mood::Works;
    int nextHandle = kFirstHandle;
    std::set<int> open;
};

State& Now() {
    static const auto s_State = std::make_unique<State>();
    return *s_State;
}

int Answer(bool works) { return works ? OS_ADAPT_OK : OS_ADAPT_FAILED; }

int Register(OS_ADAPT_STATUS_CALLBACK) { return OS_ADAPT_OK; }

// A failing one may leave a handle all the same.
int OpenPort(const char*, int* handle) {
    if (Now().mood != Mood::Odd) {
        *handle = Now().nextHandle++;
        Now().open.insert(*handle);
    }
    return Answer(Now().mood != Mood::Fails);
}

int ClosePort(int handle) {
    Demand(ListedAdapter::IsOpen(handle), "only open handles are closed, each once");
    if (Now().mood == Mood::Works) {
        Now().open.erase(handle);
    }
    return Answer(Now().mood == Mood::Works);
}

int Write(int, const void*, long length, long* written) {
    *written = length;
    return OS_ADAPT_OK;
}

int Read(int, void*, long, long* count) {
    *count = 0;
    return OS_ADAPT_OK;
}

int Enumerate(int, _OS_ADAPT_DEVICEPORTLIST* list) {
    if (Now().mood != Mood::Fails) {
        *list = Now().list;
    }
    return Answer(ListedAdapter::Enumerates());
}

} // namespace

namespace ListedAdapter {

void Bind() {
    pfnRegDevStateProc = Register;
    pfnUnRegDevStateProc = Register;
    pfnOpenPort = OpenPort;
    pfnClosePort = ClosePort;
    pfnWrite = Write;
    pfnRead = Read;
    pfnEnumPortInfo = Enumerate;
    Now() = State();
}

_OS_ADAPT_DEVICEPORTLIST& List() { return Now().list; }

void SetMood(Mood mood) { Now().mood = mood; }

bool Enumerates() { return Now().mood == Mood::Works; }

bool IsOpen(int handle) { return Now().open.count(handle) == 1; }

void Fill(int devices, int portsEach) {
    List() = {};
    List().nDeviceCount = devices;
    for (int d = 0; d < devices; ++d) {
        _OS_ADAPT_DEVICEPORTINFO& device = List().stDevice[d];
        std::snprintf(device.szDeviceName, sizeof device.szDeviceName, "Device %d", d);
        device.nPortCount = portsEach;
        for (int p = 0; p < portsEach; ++p) {
            std::snprintf(device.stPort[p].szPortName, sizeof device.stPort[p].szPortName, "COM%d",
                          d * portsEach + p);
        }
    }
}

} // namespace ListedAdapter
