// SPDX-License-Identifier: MIT
//
// The seven functions of OSAdapt.h as this adapter exports them: those that a scenario may have to
// do with pass the gate first.
#include "OSAdapt.h"

#include "adapters/shared/adapter.h"
#include "adapters/shared/guarded.h"
#include "adapters/virtual/simulation/call_gate.h"
#include "adapters/virtual/simulation/guarded_calls.h"

namespace {

// Runs at unloading and at the end of the process.
__attribute__((destructor)) void Unload() {
    EndGuardedWaiting();
    Adapter::Instance().Shutdown();
}

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return Guarded(__func__, [&] { return Adapter::Instance().Register(cb); });
}

// There is one callback at most; whichever is named, it is forgotten.
int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    return Guarded(__func__, [&] {
        EndGuardedWaiting();
        return Adapter::Instance().UnRegister();
    });
}

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    return Guarded(__func__, [&] {
        return IsGuarded(Operation::Open) ? GuardedOpen(portName, handle)
                                          : Adapter::Instance().Open(portName, handle);
    });
}

int OS_ADAPT_ClosePort(int handle) {
    return Guarded(__func__, [&] {
        return IsGuarded(Operation::Close) ? GuardedClose(handle)
                                           : Adapter::Instance().Close(handle);
    });
}

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    return Guarded(__func__, [&] {
        return IsGuarded(Operation::Write)
                   ? GuardedWrite(handle, data, length, written)
                   : Adapter::Instance().Write(handle, data, length, written);
    });
}

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    return Guarded(__func__, [&] {
        return IsGuarded(Operation::Read) ? GuardedRead(handle, buffer, size, read)
                                          : Adapter::Instance().Read(handle, buffer, size, read);
    });
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return Guarded(__func__, [&] {
        return IsGuarded(Operation::Enumerate) ? GuardedEnumerate(which, list)
                                               : Adapter::Instance().Enumerate(which, list);
    });
}
