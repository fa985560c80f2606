// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_MANAGER_OSADAPT_BINDING_H
#define KOVASMGR_MANAGER_OSADAPT_BINDING_H

#include "OSAdapt.h"

// The adapter's operations, as loaded last; null before. They keep their values when the adapter is
// unloaded, and are only called while a manager is initialised.
extern decltype(&OS_ADAPT_RegisterDeviceStateProcessCallBack) pfnRegDevStateProc;
extern decltype(&OS_ADAPT_UnRegisterDeviceStateProcessCallBack) pfnUnRegDevStateProc;
extern decltype(&OS_ADAPT_OpenPort) pfnOpenPort;
extern decltype(&OS_ADAPT_ClosePort) pfnClosePort;
extern decltype(&OS_ADAPT_Write) pfnWrite;
extern decltype(&OS_ADAPT_Read) pfnRead;
extern decltype(&OS_ADAPT_EnumDevicePortInfo) pfnEnumPortInfo;
extern void (*pfnReleasePortInfo)(); ///< reserved: never set, never called

/// Whether all seven operations are there. Every user asks for all, not only for the one it calls.
inline bool AllResolved() {
    return pfnRegDevStateProc != nullptr && pfnUnRegDevStateProc != nullptr &&
           pfnOpenPort != nullptr && pfnClosePort != nullptr && pfnWrite != nullptr &&
           pfnRead != nullptr && pfnEnumPortInfo != nullptr;
}

#endif
