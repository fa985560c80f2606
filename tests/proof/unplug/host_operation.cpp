// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/host_operation.h"

int Perform(Operation operation, const Subject& subject) {
    switch (operation) {
    case Operation::kOpen:
        return KOVAMGR_Open(subject.port);
    case Operation::kWrite:
        return KOVAMGR_Write(subject.port, "hello", 5, 0, nullptr);
    case Operation::kClose:
        return KOVAMGR_Close(subject.port);
    case Operation::kRegister:
        return KOVAMGR_RegisterCommDataReadCallback(subject.further, subject.port);
    case Operation::kUnRegister:
        return KOVAMGR_UnRegisterCommDataReadCallback(subject.registered, subject.port);
    case Operation::kRegisterState:
        return KOVAMGR_RegisterDeviceStateProcessCallback(subject.state);
    case Operation::kUnRegisterState:
        return KOVAMGR_UnRegisterDeviceStateProcessCallback(subject.state);
    case Operation::kRelease:
        return KOVAMGR_Release();
    case Operation::kReceive:
    case Operation::kEnumerate:
        break;
    }
    return 0;
}
