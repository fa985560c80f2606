// SPDX-License-Identifier: MIT
#include "tests/proof/callbacks/inside_calls.h"

#include <cstring>
#include <memory>
#include <ostream>

#include "KOVASMgr.h"
#include "KOVASMgrLog.h"
#include "KOVASMgrPaths.h"
#include "KOVASMgrSearch.h"
#include "tests/api/callback_recorder.h"

namespace {

int Enumerate() {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    const int result = KOVAMGR_EnumeratePortInfo(list.get());
    return result == KOVAMGR_OK && list->nDeviceCount >= 1 ? result : -1;
}

int HasTime() {
    char text[32] = {};
    PelMgr_GetCurrentTime(text, nullptr);
    return static_cast<int>(std::strlen(text));
}

int HasPaths() {
    return *GetCurrentPath() == '/' && *GetKOVASMgrDllPath() == '/' && *GetOSAdaptDllPath() == '/';
}

int Finds() {
    static const char* const kHay = "hay and needle";
    return SubMem(kHay, 14, "needle", 6) == kHay + 8 &&
           SubCaseMem(kHay, 14, "Needle", 6) == kHay + 8 && memcasecmp(kHay, "hay", 3) == kHay;
}

} // namespace

// clang-format off

const std::vector<InsideCall>& InsideCalls() {
    static const std::vector<InsideCall> calls{
        {"OpenOfAClosedPort", [] { return KOVAMGR_Open(2); }, KOVAMGR_OK},
        {"OpenOfAnOpenPort", [] { return KOVAMGR_Open(1); }, KOVAMGR_OK},
        {"OpenOfAnUnknownPort", [] { return KOVAMGR_Open(9); }, KOVAMGR_ERR_PARAM},
        {"OpenOfANegativePort", [] { return KOVAMGR_Open(-1); }, KOVAMGR_ERR_PARAM},
        {"CloseOfAnOpenPort", [] { return KOVAMGR_Close(1); }, KOVAMGR_OK},
        {"CloseOfAClosedPort", [] { return KOVAMGR_Close(2); }, KOVAMGR_OK},
        {"CloseOfAnUnknownPort", [] { return KOVAMGR_Close(9); }, KOVAMGR_OK},
        {"CloseOfANegativePort", [] { return KOVAMGR_Close(-1); }, KOVAMGR_ERR_PARAM},
        {"WriteToAnOpenPort", [] { return KOVAMGR_Write(1, "abc", 3, 0, nullptr); }, 3},
        {"WriteToAClosedPort", [] { return KOVAMGR_Write(2, "abc", 3, 0, nullptr); },
         KOVAMGR_ERR_NO_HANDLE},
        {"WriteToAnUnknownPort", [] { return KOVAMGR_Write(9, "abc", 3, 0, nullptr); }, -1},
        {"WriteOfNothing", [] { return KOVAMGR_Write(1, nullptr, 3, 0, nullptr); },
         KOVAMGR_ERR_PARAM},
        {"GetPortState", [] { return KOVAMGR_GetPortState(1); }, KOVAMGR_PORT_STATE_READY},
        {"GetPortStateOfANegativePort", [] { return KOVAMGR_GetPortState(-1); }, KOVAMGR_ERR_PARAM},
        {"EnumeratePortInfo", Enumerate, KOVAMGR_OK},
        {"EnumeratePortInfoWithoutAList", [] { return KOVAMGR_EnumeratePortInfo(nullptr); },
         KOVAMGR_ERR_PARAM},
        {"RegisterCommDataReadCallback",
         [] { return KOVAMGR_RegisterCommDataReadCallback(OnRead<3>, 1); }, KOVAMGR_OK},
        {"RegisterCommDataReadCallbackAgain",
         [] { return KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1); }, KOVAMGR_OK},
        {"RegisterCommDataReadCallbackForAnUnknownPort",
         [] { return KOVAMGR_RegisterCommDataReadCallback(OnRead<3>, 9); }, KOVAMGR_ERR_PARAM},
        {"RegisterCommDataReadCallbackWithoutOne",
         [] { return KOVAMGR_RegisterCommDataReadCallback(nullptr, 1); }, KOVAMGR_ERR_PARAM},
        {"UnRegisterCommDataReadCallbackItself",
         [] { return KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, 1); }, KOVAMGR_OK},
        {"UnRegisterCommDataReadCallbackOfAnother",
         [] { return KOVAMGR_UnRegisterCommDataReadCallback(OnRead<2>, 1); }, KOVAMGR_OK},
        {"UnRegisterCommDataReadCallbackForAnUnknownPort",
         [] { return KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, 9); }, KOVAMGR_ERR_PARAM},
        {"UnRegisterCommDataReadCallbackWithoutOne",
         [] { return KOVAMGR_UnRegisterCommDataReadCallback(nullptr, 1); }, KOVAMGR_ERR_PARAM},
        {"RegisterDeviceStateProcessCallback",
         [] { return KOVAMGR_RegisterDeviceStateProcessCallback(OnState<3>); }, KOVAMGR_OK},
        {"RegisterDeviceStateProcessCallbackWithoutOne",
         [] { return KOVAMGR_RegisterDeviceStateProcessCallback(nullptr); }, KOVAMGR_ERR_PARAM},
        {"UnRegisterDeviceStateProcessCallbackItself",
         [] { return KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<1>); }, KOVAMGR_OK},
        {"UnRegisterDeviceStateProcessCallbackOfAnother",
         [] { return KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<2>); }, KOVAMGR_OK},
        {"UnRegisterDeviceStateProcessCallbackWithoutOne",
         [] { return KOVAMGR_UnRegisterDeviceStateProcessCallback(nullptr); }, KOVAMGR_ERR_PARAM},
        {"Init", [] { return KOVAMGR_Init("log"); }, KOVAMGR_OK},
        {"InitWithoutADirectory", [] { return KOVAMGR_Init(nullptr); }, KOVAMGR_ERR_PARAM},
        {"InitInAMissingDirectory", [] { return KOVAMGR_Init("missing"); }, KOVAMGR_ERR_PARAM},
        {"Release", [] { return KOVAMGR_Release(); }, KOVAMGR_OK},
        {"INFO_LOG", [] { return INFO_LOG("from a callback"); }, 1},
        {"ERRO_LOG", [] { return ERRO_LOG("from a callback"); }, 1},
        {"FATAL_LOG", [] { return FATAL_LOG("from a callback"); }, 1},
        {"KOVASMGR_LOG_INIT", [] { return KOVASMGR_LOG_INIT("log"); }, 1},
        {"INIT_LOG", [] { return INIT_LOG("log/other.log", true); }, 1},
        {"PelMgr_GetCurrentTime", HasTime, 23},
        {"ThePaths", HasPaths, 1},
        {"TheSearch", Finds, 1},
    };
    return calls;
}

// clang-format on

std::ostream& operator<<(std::ostream& out, const InsideCall& call) { return out << call.name; }
