// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "KOVASMgrLog.h"
#include "common/jmutex_guard.h"
#include "manager/callback_scope.h"
#include "manager/osadapt_binding.h"
#include "manager/port_manager.h"

namespace {

constexpr useconds_t kPollMicroseconds = 10000;
constexpr size_t kBufferSize = KOVAMGR_READ_SIZE + 1; // a zero byte follows the longest read
constexpr size_t kCacheLine = 64;                     // what starts at one is cleared fastest

} // namespace

void CKOVASMgrPort::ReadThread() {
    CallbackScope scope;
    alignas(kCacheLine) char buffer[kBufferSize] = {};
    long length = 0; // not reset between reads: the adapter sets it on every success
    while (m_bReadThreadRun != 0) {
        {
            JMutexGuard lock(m_PortMutex);
            SweepPorts(buffer, length);
        }
        usleep(kPollMicroseconds);
    }
    INFO_LOG("ReadThread() Exit \n");
}

// By index, with the size read anew: a callback may change the list.
void CKOVASMgrPort::SweepPorts(char* buffer, long& length) {
    for (size_t i = 0; i < m_stPreparedPorts.size() && m_bReadThreadRun != 0; ++i) {
        const int32_t handle = m_stPreparedPorts[i].hPort;
        if (handle == OS_ADAPT_NO_HANDLE) {
            continue;
        }
        if (!AllResolved()) {
            INFO_LOG("Can't load OSAdapt DLL for OS_ADAPT_Read.");
            continue;
        }
        std::memset(buffer, 0, kBufferSize);
        if (pfnRead(handle, buffer, KOVAMGR_READ_SIZE, &length) != OS_ADAPT_OK) {
            INFO_LOG("Read failed.\n");
            continue;
        }
        if (length > 0) {
            DeliverData(i, buffer, static_cast<int>(std::min<long>(length, KOVAMGR_READ_SIZE)));
        }
    }
}

// A callback may remove itself and others, and the port may go: what is called next is looked up
// again each time. The walk advances only past an entry that still stands where it was called, at
// most as often as there were entries, so that callbacks which swap places cannot keep it going.
void CKOVASMgrPort::DeliverData(size_t index, char* data, int length) {
    const int32_t portID = m_stPreparedPorts[index].nPortID;
    size_t stays = m_stPreparedPorts[index].vecReadCallbacks.size();
    for (size_t k = 0; m_bReadThreadRun != 0;) {
        // cppcheck-suppress containerOutOfBounds ; the port is there: its going ends the walk
        const auto& callbacks = m_stPreparedPorts[index].vecReadCallbacks;
        if (k >= callbacks.size()) {
            return;
        }
        const KOVAMGR_READ_CALLBACK cb = callbacks[k];
        if (cb != nullptr) {
            cb(data, length);
        }
        if (index >= m_stPreparedPorts.size() || m_stPreparedPorts[index].nPortID != portID) {
            return;
        }
        const auto& after = m_stPreparedPorts[index].vecReadCallbacks;
        if (k >= after.size() || after[k] == cb || stays == 0) {
            ++k;
        } else {
            --stays;
        }
    }
}
