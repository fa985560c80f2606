// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_UNIT_MANAGER_UNRESOLVED_H
#define KOVASMGR_TESTS_UNIT_MANAGER_UNRESOLVED_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "manager/osadapt_binding.h"

/// One operation of the adapter: its symbol, and its place in the table.
struct Operation {
    std::string symbol;
    void* (*get)();
    void (*clear)();
};

inline const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = {
        {"OS_ADAPT_RegisterDeviceStateProcessCallBack",
         [] { return reinterpret_cast<void*>(pfnRegDevStateProc); },
         [] { pfnRegDevStateProc = nullptr; }},
        {"OS_ADAPT_UnRegisterDeviceStateProcessCallBack",
         [] { return reinterpret_cast<void*>(pfnUnRegDevStateProc); },
         [] { pfnUnRegDevStateProc = nullptr; }},
        {"OS_ADAPT_OpenPort", [] { return reinterpret_cast<void*>(pfnOpenPort); },
         [] { pfnOpenPort = nullptr; }},
        {"OS_ADAPT_ClosePort", [] { return reinterpret_cast<void*>(pfnClosePort); },
         [] { pfnClosePort = nullptr; }},
        {"OS_ADAPT_Write", [] { return reinterpret_cast<void*>(pfnWrite); },
         [] { pfnWrite = nullptr; }},
        {"OS_ADAPT_Read", [] { return reinterpret_cast<void*>(pfnRead); },
         [] { pfnRead = nullptr; }},
        {"OS_ADAPT_EnumDevicePortInfo", [] { return reinterpret_cast<void*>(pfnEnumPortInfo); },
         [] { pfnEnumPortInfo = nullptr; }},
    };
    return operations;
}

/// For tests that are made once for each operation, and carry its name.
inline std::string OperationName(const testing::TestParamInfo<Operation>& info) {
    return info.param.symbol;
}

inline void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.symbol; }

#endif
