// SPDX-License-Identifier: MIT
//
// The seven functions of OSAdapt.h, and those beyond them that adapters of this project have.
#include "OSAdapt.h"

#include <cstdlib>

#include "adapters/shared/guarded.h"
#include "adapters/spy/spy.h"

namespace {

// What is registered by atexit runs before the destructors at the end of the process, and behind
// them at unloading.
std::atomic<bool> s_IsProcessEnding{false};

__attribute__((constructor)) void Load() {
    std::atexit([] { s_IsProcessEnding = true; });
}

__attribute__((destructor)) void Unload() { s_IsProcessEnding ? Spy::EndProcess() : Spy::Unload(); }

// The first call finds out whether anything is watched.
template <typename Unwatched, typename Watched>
int Pass(const char* function, Unwatched unwatched, Watched watched) {
    if (const AdapterFunctions* const functions = Spy::Unwatched(); functions != nullptr) {
        return unwatched(*functions);
    }
    return Guarded(function, [&] {
        Spy* const spy = Spy::Get();
        const AdapterFunctions* const functions = Spy::Unwatched();
        return spy == nullptr         ? OS_ADAPT_FAILED
               : functions != nullptr ? unwatched(*functions)
                                      : watched(*spy);
    });
}

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return Pass(
        __func__, [&](const AdapterFunctions& adapter) { return adapter.registerCallback(cb); },
        [&](Spy& spy) { return spy.Register(cb); });
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return Pass(
        __func__, [&](const AdapterFunctions& adapter) { return adapter.unRegisterCallback(cb); },
        [&](Spy& spy) { return spy.UnRegister(cb); });
}

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    return Pass(
        __func__, [&](const AdapterFunctions& adapter) { return adapter.open(portName, handle); },
        [&](Spy& spy) { return spy.Open(portName, handle); });
}

int OS_ADAPT_ClosePort(int handle) {
    return Pass(
        __func__, [&](const AdapterFunctions& adapter) { return adapter.close(handle); },
        [&](Spy& spy) { return spy.Close(handle); });
}

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    return Pass(
        __func__,
        [&](const AdapterFunctions& adapter) {
            return adapter.write(handle, data, length, written);
        },
        [&](Spy& spy) { return spy.Write(handle, data, length, written); });
}

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    return Pass(
        __func__,
        [&](const AdapterFunctions& adapter) { return adapter.read(handle, buffer, size, read); },
        [&](Spy& spy) { return spy.Read(handle, buffer, size, read); });
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return Pass(
        __func__, [&](const AdapterFunctions& adapter) { return adapter.enumerate(which, list); },
        [&](Spy& spy) { return spy.Enumerate(which, list); });
}
