// SPDX-License-Identifier: MIT
//
// The seven functions, each for a culprit to define anew.
#include "tests/conformance/good_adapter.h"

#define WEAK __attribute__((weak))

WEAK int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return good::Register(cb);
}

WEAK int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    return good::UnRegister();
}

WEAK int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    return good::Open(portName, handle);
}

WEAK int OS_ADAPT_ClosePort(int handle) { return good::Close(handle); }

WEAK int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    return good::Write(handle, data, length, written);
}

WEAK int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    return good::Read(handle, buffer, size, read);
}

WEAK int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return good::Enumerate(which, list);
}

namespace good {

WEAK void Tell(OS_ADAPT_STATUS_CALLBACK callback, _OS_ADAPT_DEVICESTATUS_TYPE status) {
    callback(status);
}

WEAK size_t StackSize() { return size_t{2} * 1024 * 1024; }
WEAK bool WaitsForNotice() { return true; }
WEAK bool KnowsItself() { return true; }
WEAK bool RemembersLastAnswer() { return true; }
WEAK bool SeesChangesDuringNotice() { return true; }
WEAK bool ClosesDescriptorAtDeath() { return true; }
WEAK bool DropsOldHandle() { return true; }
WEAK bool ReclaimsOpenPorts() { return true; }
WEAK int NextHandle(int last) { return last + 1; }

} // namespace good
