// SPDX-License-Identifier: MIT
//
// The seven functions in front of what all adapters share, with faults on the way. A fault leaves
// nothing half done: a read that fails has taken no byte, a write that is cut has sent its first
// half.
#include "OSAdapt.h"

#include "adapters/shared/adapter.h"
#include "adapters/shared/guarded.h"
#include "tests/proof/soak/faults.h"

namespace {

// Runs at unloading and at the end of the process.
__attribute__((destructor)) void Unload() { Adapter::Instance().Shutdown(); }

// What a failed enumeration leaves behind: nobody may look at it.
int FailHalfFilled(_OS_ADAPT_DEVICEPORTLIST* list) {
    list->nDeviceCount = 1;
    list->stDevice[0].nPortCount = OS_ADAPT_MAX_PORTS;
    return OS_ADAPT_FAILED;
}

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return Guarded(__func__, [&] { return Adapter::Instance().Register(cb); });
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    return Guarded(__func__, [&] { return Adapter::Instance().UnRegister(); });
}

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    return faults::IsDue(Fault::kOpen)
               ? OS_ADAPT_FAILED
               : Guarded(__func__, [&] { return Adapter::Instance().Open(portName, handle); });
}

int OS_ADAPT_ClosePort(int handle) {
    return faults::IsDue(Fault::kClose)
               ? OS_ADAPT_FAILED
               : Guarded(__func__, [&] { return Adapter::Instance().Close(handle); });
}

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    if (faults::IsDue(Fault::kWrite)) {
        return OS_ADAPT_FAILED;
    }
    const long taken = faults::IsDue(Fault::kShortWrite) ? length / 2 : length;
    return Guarded(__func__,
                   [&] { return Adapter::Instance().Write(handle, data, taken, written); });
}

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    return faults::IsDue(Fault::kRead) ? OS_ADAPT_FAILED : Guarded(__func__, [&] {
        return Adapter::Instance().Read(handle, buffer, size, read);
    });
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return faults::IsDue(Fault::kEnumerate)
               ? FailHalfFilled(list)
               : Guarded(__func__, [&] { return Adapter::Instance().Enumerate(which, list); });
}
