// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_BINDING_H
#define KOVASMGR_TESTS_PROOF_MODEL_BINDING_H

#include "OSAdapt.h"

namespace model {

/// The functions of an adapter.
struct AdapterFunctions {
    decltype(&OS_ADAPT_RegisterDeviceStateProcessCallBack) registerCallback;
    decltype(&OS_ADAPT_UnRegisterDeviceStateProcessCallBack) unRegisterCallback;
    decltype(&OS_ADAPT_OpenPort) open;
    decltype(&OS_ADAPT_ClosePort) close;
    decltype(&OS_ADAPT_Write) write;
    decltype(&OS_ADAPT_Read) read;
    decltype(&OS_ADAPT_EnumDevicePortInfo) enumerate;
};

/// Those that lead to the world of whoever is called (host_callbacks.h).
const AdapterFunctions& WorldFunctions();

/// Binds the library to them, without loading anything.
/// @param missing  the function that is not there (kFunctions: all are)
void Bind(int missing);

} // namespace model

#endif
