// SPDX-License-Identifier: MIT
//
// What the fake exports. Each variant is compiled from this file with one function left out by
// FAKE_WITHOUT_<function>.
#include "common/never_destroyed.h"
#include "tests/fakes/fake_state.h"

namespace {

NeverDestroyed<FakeState> g_State;

// The state outlives every thread that is inside at exit; what it has allocated is given back.
struct Cleaner {
    ~Cleaner() { g_State->Reset(); }
} g_Cleaner;

} // namespace

extern "C" {

FakeAdapterControl* FakeAdapter_Control() { return &*g_State; }

#ifndef FAKE_WITHOUT_OS_ADAPT_RegisterDeviceStateProcessCallBack
int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return g_State->Register(cb);
}
#endif

#ifndef FAKE_WITHOUT_OS_ADAPT_UnRegisterDeviceStateProcessCallBack
int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return g_State->UnRegister(cb);
}
#endif

#ifndef FAKE_WITHOUT_OS_ADAPT_OpenPort
int OS_ADAPT_OpenPort(const char* portName, int* handle) { return g_State->Open(portName, handle); }
#endif

#ifndef FAKE_WITHOUT_OS_ADAPT_ClosePort
int OS_ADAPT_ClosePort(int handle) { return g_State->Close(handle); }
#endif

#ifndef FAKE_WITHOUT_OS_ADAPT_Write
int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    return g_State->Write(handle, data, length, written);
}
#endif

#ifndef FAKE_WITHOUT_OS_ADAPT_Read
int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    return g_State->Read(handle, buffer, size, read);
}
#endif

#ifndef FAKE_WITHOUT_OS_ADAPT_EnumDevicePortInfo
int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return g_State->Enum(which, list);
}
#endif

} // extern "C"
