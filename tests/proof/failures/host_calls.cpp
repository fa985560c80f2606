// SPDX-License-Identifier: MIT
#include "tests/proof/failures/host_calls.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>

#include "KOVASMgr.h"
#include "tests/harness/wait_until.h"
#include "tests/proof/failures/fault.h"

namespace {

std::atomic<long> s_Bytes{0};
std::atomic<long> s_Notices{0};

void CountBytes(void*, int length) { s_Bytes += length; }
void CountNotice(_KOVAMGR_DEV_STATE_TYPE_ state) {
    if (state == KOVAMGR_DEVICE_INSERT || state == KOVAMGR_DEVICE_PULLOUT) {
        ++s_Notices;
    }
}

template <typename Call> long ResultOf(Call call) {
    const NotSpared notSpared;
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return kThrewBadAlloc;
    } catch (const std::runtime_error&) {
        return kThrewRuntimeError;
    }
}

long Notify(Stage& stage, _OS_ADAPT_DEVICESTATUS_TYPE status) {
    const OS_ADAPT_STATUS_CALLBACK callback = g_SteeredAdapter.callback;
    long result = KOVAMGR_OK;
    if (callback != nullptr) {
        stage.notifier.Run([&] {
            result = ResultOf([=] {
                callback(status);
                return KOVAMGR_OK;
            });
        });
    }
    return result;
}

} // namespace

long Init(Stage& stage, int) {
    const char* directory = stage.logDirectory.c_str();
    return ResultOf([=] { return KOVAMGR_Init(directory); });
}

long Release(Stage&, int) { return ResultOf(KOVAMGR_Release); }

long Enumerate(Stage&, int) {
    static _KOVAMGR_DEVICEINFOLIST list;
    return ResultOf([] { return KOVAMGR_EnumeratePortInfo(&list); });
}

long RegisterRead(Stage&, int port) {
    return ResultOf([=] { return KOVAMGR_RegisterCommDataReadCallback(CountBytes, port); });
}

long UnRegisterRead(Stage&, int port) {
    return ResultOf([=] { return KOVAMGR_UnRegisterCommDataReadCallback(CountBytes, port); });
}

long RegisterState(Stage&, int) {
    return ResultOf([] { return KOVAMGR_RegisterDeviceStateProcessCallback(CountNotice); });
}

long UnRegisterState(Stage&, int) {
    return ResultOf([] { return KOVAMGR_UnRegisterDeviceStateProcessCallback(CountNotice); });
}

long Open(Stage&, int port) {
    return ResultOf([=] { return KOVAMGR_Open(port); });
}

long Close(Stage&, int port) {
    return ResultOf([=] { return KOVAMGR_Close(port); });
}

long Write(Stage&, int port) {
    return ResultOf([=] { return KOVAMGR_Write(port, "five!", 5, 0, nullptr); });
}

long Receive(Stage&, int) {
    const long before = g_SteeredAdapter.reads;
    bool isOpen = false;
    for (const auto& handle : g_SteeredAdapter.handles) {
        isOpen = isOpen || handle != 0;
    }
    const bool isSwept = WaitUntil([=] { return g_SteeredAdapter.reads >= before + 3; },
                                   std::chrono::seconds(isOpen ? 20 : 0));
    return !isOpen || isSwept ? KOVAMGR_OK : KOVAMGR_ERR_THREAD;
}

long Plug(Stage& stage, int) {
    g_SteeredAdapter.isGuestAttached = true;
    return Notify(stage, OS_ADAPT_DEVICE_INSERT);
}

long Pull(Stage& stage, int) {
    g_SteeredAdapter.isGuestAttached = false;
    return Notify(stage, OS_ADAPT_DEVICE_PULLOUT);
}

int PortID(SteeredPort port) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    if (port == kSteeredPorts || KOVAMGR_EnumeratePortInfo(list.get()) != KOVAMGR_OK) {
        return kUnknownPort;
    }
    for (uint32_t d = 0; d < list->nDeviceCount; ++d) {
        const _KOVAMGR_DEVICEINFO& device = list->stDevice[d];
        for (uint32_t p = 0; p < device.nPortCount; ++p) {
            if (std::strcmp(device.stPort[p].szPortName, kPortNames[port]) == 0) {
                return device.stPort[p].nPortID;
            }
        }
    }
    return kUnknownPort;
}

long BytesReceived() { return s_Bytes; }

long NoticesReceived() { return s_Notices; }
