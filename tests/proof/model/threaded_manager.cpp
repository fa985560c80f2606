// SPDX-License-Identifier: MIT
#include "tests/proof/model/threaded_manager.h"

#include <algorithm>
#include <stdexcept>

#include "api/state.h"
#include "tests/harness/manager_probe.h"
#include "tests/harness/wait_until.h"

namespace model {
namespace {

long OpenPorts() {
    const auto& ports = ManagerProbe::PreparedPorts(*g_pMgrPort);
    return std::count_if(ports.begin(), ports.end(),
                         [](const _PORT_& port) { return port.hPort != OS_ADAPT_NO_HANDLE; });
}

void LeaveOut(std::string& text, const std::string& part) {
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
        text.erase(at, part.size());
    }
}

} // namespace

ThreadedManager::ThreadedManager(const std::string& logDirectory, TraceFile& trace)
    : RealManager(logDirectory, trace) {
    Adapter().IgnoreLengthBeforeRead();
    Adapter().LimitReads(0);
}

ThreadedManager::~ThreadedManager() { KOVAMGR_Release(); }

int ThreadedManager::Init() { return KOVAMGR_Init(LogDirectory().c_str()); }

// While the lock is held no sweep is under way, so that the next one begins at the first port. The
// thread holds it until the last callback has returned.
void ThreadedManager::Sweep() {
    {
        JMutexGuard lock(ManagerProbe::PortMutex(*g_pMgrPort));
        Adapter().LimitReads(OpenPorts());
    }
    if (!WaitUntil([this] { return !Adapter().HasReadsLeft(); })) {
        throw std::runtime_error("the read thread does not sweep");
    }
    JMutexGuard lock(ManagerProbe::PortMutex(*g_pMgrPort));
}

std::string ThreadedManager::TakeLog() {
    std::string log = RealManager::TakeLog();
    for (const char* line : {"Begin m_ReadThread.EndThread()\n", "End m_ReadThread.EndThread()\n",
                             "ReadThread() Exit \n\n"}) {
        LeaveOut(log, "[TIME] INFO:" + std::string(line));
    }
    return log;
}

} // namespace model
