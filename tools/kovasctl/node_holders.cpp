// SPDX-License-Identifier: MIT
#include "tools/kovasctl/node_holders.h"

#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <vector>

#include "tools/kovasctl/processes.h"

namespace {

// The kernel's list of locks names a file as "major:minor:inode", in hexadecimal digits but for the
// inode, and the process, which it does also where the process itself may not be looked into.
std::string LockNameOf(const struct stat& info) {
    char text[64] = "";
    std::snprintf(text, sizeof text, "%02x:%02x:%llu", major(info.st_dev), minor(info.st_dev),
                  static_cast<unsigned long long>(info.st_ino));
    return text;
}

/// "1: FLOCK  ADVISORY  WRITE 4711 00:16:5 0 EOF"; a line of one that waits has a "->" in it.
std::string ProcessOfLock(const std::string& line, const std::string& lockName) {
    std::istringstream words(line);
    std::string number, kind, manner, access, process, file;
    words >> number >> kind >> manner >> access >> process >> file;
    return file == lockName && access == "WRITE" ? process : "";
}

std::set<std::string> ProcessesWithLock(const struct stat& info) {
    std::ifstream locks("/proc/locks");
    std::set<std::string> processes;
    for (std::string line; std::getline(locks, line);) {
        const std::string process = ProcessOfLock(line, LockNameOf(info));
        if (!process.empty() && process != std::to_string(getpid())) {
            processes.insert(process);
        }
    }
    return processes;
}

// A lock that was taken before a fork is listed with a process that may have ended.
std::string Describe(const std::string& process) {
    const std::string name = ProcessName(process);
    return "process " + process + (name.empty() ? "" : " (" + name + ")");
}

} // namespace

void ExamineHolders(const std::string& node, const struct stat& info, Findings& findings) {
    const std::set<std::string> locking = ProcessesWithLock(info);
    for (const std::string& process : locking) {
        findings.Problem(node, "held with an exclusive lock by " + Describe(process),
                         "close it there, or: kill " + process);
    }
    bool isHeld = !locking.empty();
    for (const std::string& process : OtherProcesses()) {
        if (locking.count(process) == 0 && HasTerminalOpen(process, info.st_rdev)) {
            findings.Problem(node, "held open by " + Describe(process),
                             "close it there, or: kill " + process);
            isHeld = true;
        }
    }
    if (!isHeld) {
        findings.Good(node, geteuid() == 0 ? "no other process holds it"
                                           : "no process that this user may look into holds it");
    }
}
