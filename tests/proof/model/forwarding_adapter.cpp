// SPDX-License-Identifier: MIT
//
// An adapter that hands every call on to the functions that it was given.
#include "tests/proof/model/binding.h"

namespace {

const model::AdapterFunctions* s_Functions = nullptr;

} // namespace

extern "C" {

KOVASMGR_API void ModelAdapter_Forward(const model::AdapterFunctions* functions) {
    s_Functions = functions;
}

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return s_Functions->registerCallback(cb);
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return s_Functions->unRegisterCallback(cb);
}

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    return s_Functions->open(portName, handle);
}

int OS_ADAPT_ClosePort(int handle) { return s_Functions->close(handle); }

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    return s_Functions->write(handle, data, length, written);
}

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    return s_Functions->read(handle, buffer, size, read);
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return s_Functions->enumerate(which, list);
}
}
