// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include "manager/notification_gate.h"
#include "manager/port_manager.h"

namespace {

CKOVASMgrPort* s_pInstance = nullptr;

// The latest manager that could not be stopped; each leads to the one before, so that what they own
// stays reachable.
CKOVASMgrPort* s_pAbandoned = nullptr;

// The thread of an abandoned manager may still return into our code, so it must not be unmapped.
void KeepLibraryLoaded() {
    Dl_info info{};
    dladdr(&s_pInstance, &info); // of an address of our own there is always an answer
    dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace

CKOVASMgrPort* CKOVASMgrPort::GetInstance() {
    if (s_pInstance == nullptr) {
        s_pInstance = new CKOVASMgrPort;
        NotificationGate::Get().Open(s_pInstance);
    }
    return s_pInstance;
}

void CKOVASMgrPort::ReleaseInstance() {
    if (s_pInstance == nullptr) {
        return;
    }
    s_pInstance->Release();
    if (s_pInstance->m_bAbandoned) {
        KeepLibraryLoaded();
        s_pInstance->m_pAbandonedBefore = s_pAbandoned;
        s_pAbandoned = s_pInstance;
    } else {
        delete s_pInstance; // GCOVR_EXCL_BR_LINE: asks for null once more
    }
    s_pInstance = nullptr;
}
