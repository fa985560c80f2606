// SPDX-License-Identifier: MIT
#include "tests/proof/failures/inspection.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "KOVASMgr.h"
#include "KOVASMgrLog.h"
#include "api/state.h"
#include "tests/harness/manager_probe.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

namespace fs = std::filesystem;

constexpr auto kNoRescan = static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(5);

void CallNobody(_KOVAMGR_DEV_STATE_TYPE_) {}

std::vector<std::string> SortedNames(const std::vector<_PORT_>& ports) {
    std::vector<std::string> names;
    names.reserve(ports.size());
    for (const _PORT_& port : ports) {
        names.push_back(port.strPortName);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<_PORT_> PortsOfTree(CKOVASMgrPort& manager) {
    std::vector<_PORT_> ports;
    for (const _COMM_MGR_DEVICE_INFO_& device : ManagerProbe::CopyOfDeviceTree(manager)) {
        ports.insert(ports.end(), device.vecPorts.begin(), device.vecPorts.end());
    }
    return ports;
}

// Un-registering takes the device-state lock also for a callback that was never there.
void TakeEveryLock() {
    CKOVASMgrPort::ProcessDeviceState(kNoRescan);
    KOVAMGR_UnRegisterDeviceStateProcessCallback(CallNobody);
    KOVAMGR_GetPortState(1);
    INFO_LOG("inspected");
}

bool AreContainersInStep() {
    return g_pMgrPort == nullptr || SortedNames(ManagerProbe::CopyOfPreparedPorts(*g_pMgrPort)) ==
                                        SortedNames(PortsOfTree(*g_pMgrPort));
}

bool IsLog(const std::string& path) { return path.find("/KOVASMgr.log") != std::string::npos; }

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += " " + text;
    }
    return joined;
}

// The directory that is being read is open itself, and gone when its entry is looked at. A log stays
// open when it is left for another one, but each once.
std::vector<std::string> Descriptors() {
    std::vector<std::string> targets;
    std::set<std::string> logs;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = fs::read_symlink(entry.path(), error).string();
        const bool isFirstOfLog = IsLog(target) && logs.insert(target).second;
        if (!error && !isFirstOfLog && target.find("/fd") == std::string::npos) {
            targets.push_back(target);
        }
    }
    std::sort(targets.begin(), targets.end());
    return targets;
}

} // namespace

std::string Inspect(SideThread& thread, const std::string& step) {
    bool areInStep = true;
    thread.Run(TakeEveryLock);
    thread.Run([&] { areInStep = AreContainersInStep(); });
    return areInStep ? "" : step + ": the containers are out of step\n";
}

Holdings Holdings::Now() { return {RunningThreads(), Descriptors()}; }

std::string Difference(const Holdings& before) {
    std::string report;
    if (!WaitUntil([&] { return RunningThreads() == before.threads; })) {
        report += "threads: " + std::to_string(before.threads) + " before, " +
                  std::to_string(RunningThreads()) + " now\n";
    }
    // A sanitizer opens a pipe for a moment: now, or when they were counted before.
    std::vector<std::string> now;
    const std::vector<std::string>& then = before.descriptors;
    if (!WaitUntil([&] {
            now = Descriptors();
            return std::includes(then.begin(), then.end(), now.begin(), now.end());
        })) {
        report += "descriptors:" + Joined(then) + " before," + Joined(now) + " now\n";
    }
    return report;
}
