// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_UNIT_COMMON_LOADED_ADAPTER_H
#define KOVASMGR_TESTS_UNIT_COMMON_LOADED_ADAPTER_H

#include <string>

#include "common/jlibrary.h"

/// Which of the scripted adapters a library is, told by what it lacks; "nothing" when none is
/// loaded.
inline std::string LoadedAdapter(const JLibrary& library) {
    if (library.resolve("FakeAdapter_Control") == nullptr) {
        return "nothing";
    }
    for (const char* function : {"OS_ADAPT_OpenPort", "OS_ADAPT_ClosePort", "OS_ADAPT_Write",
                                 "OS_ADAPT_Read", "OS_ADAPT_EnumDevicePortInfo"}) {
        if (library.resolve(function) == nullptr) {
            return std::string("lacks_") + function;
        }
    }
    return "complete";
}

#endif
