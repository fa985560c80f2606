// SPDX-License-Identifier: MIT
#include "manager/osadapt_binding.h"

#include <cxxabi.h>

#include <string>

#include "common/jdir.h"
#include "common/jlibrary.h"
#include "manager/port_manager.h"

decltype(&OS_ADAPT_RegisterDeviceStateProcessCallBack) pfnRegDevStateProc = nullptr;
decltype(&OS_ADAPT_UnRegisterDeviceStateProcessCallBack) pfnUnRegDevStateProc = nullptr;
decltype(&OS_ADAPT_OpenPort) pfnOpenPort = nullptr;
decltype(&OS_ADAPT_ClosePort) pfnClosePort = nullptr;
decltype(&OS_ADAPT_Write) pfnWrite = nullptr;
decltype(&OS_ADAPT_Read) pfnRead = nullptr;
decltype(&OS_ADAPT_EnumDevicePortInfo) pfnEnumPortInfo = nullptr;
void (*pfnReleasePortInfo)() = nullptr;

namespace {

// Stores null for a missing symbol, so that AllResolved tells.
template <typename Function>
void Resolve(const JLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.resolve(name));
}

} // namespace

bool CKOVASMgrPort::LoadDll() {
    try {
        std::string path = JDir::getCurrentPath();
        path += JDir::separator();
        path += "OSAdapt";
        // An earlier object is not freed: operations of it may be in use. The second load of one
        // library only counts a reference.
        m_pOSAdaptLib = new JLibrary(path); // GCOVR_EXCL_BR_LINE: how new cleans up after a throw
        Resolve(*m_pOSAdaptLib, "OS_ADAPT_RegisterDeviceStateProcessCallBack", pfnRegDevStateProc);
        Resolve(*m_pOSAdaptLib, "OS_ADAPT_UnRegisterDeviceStateProcessCallBack",
                pfnUnRegDevStateProc);
        Resolve(*m_pOSAdaptLib, "OS_ADAPT_OpenPort", pfnOpenPort);
        Resolve(*m_pOSAdaptLib, "OS_ADAPT_ClosePort", pfnClosePort);
        Resolve(*m_pOSAdaptLib, "OS_ADAPT_Write", pfnWrite);
        Resolve(*m_pOSAdaptLib, "OS_ADAPT_Read", pfnRead);
        Resolve(*m_pOSAdaptLib, "OS_ADAPT_EnumDevicePortInfo", pfnEnumPortInfo);
    } catch (abi::__forced_unwind&) {
        throw; // thread cancellation must pass
    } catch (...) {
        return false;
    }
    return AllResolved();
}
