// SPDX-License-Identifier: MIT
#include "tools/kovasctl/stats/file.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/processes.h"

namespace {

namespace fs = std::filesystem;

// The runtime directory may have appeared after the host, or be another one: all are looked at.
std::vector<std::string> Bases() {
    std::vector<std::string> bases;
    const char* const runtime = secure_getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/') {
        bases.push_back(std::string(runtime) + "/kovasmgr-spy");
    }
    bases.push_back("/tmp/kovasmgr-spy-" + std::to_string(geteuid()));
    return bases;
}

bool IsOurs(const struct stat& info) {
    return info.st_uid == geteuid() && (info.st_mode & 077) == 0;
}

bool IsPrivateDirectory(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && IsOurs(info);
}

bool IsRunning(int process) { return kill(process, 0) == 0 || errno == EPERM; }

std::string DirectoryOf(int process) {
    for (const std::string& base : Bases()) {
        std::string directory = base + "/" + std::to_string(process);
        if (IsPrivateDirectory(base) && IsPrivateDirectory(directory)) {
            return directory;
        }
    }
    return "";
}

// 0: the name is no process identifier.
int ProcessOf(const std::string& name) {
    const bool isNumber = !name.empty() && name.size() < 10 && name.front() != '0' &&
                          name.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::stoi(name) : 0;
}

using Counters = std::unique_ptr<OSADAPT_SPY_COUNTERS>;

// By reading and not by mapping: a file that is cut meanwhile is no crash then.
// @return null when the file is shorter
Counters ReadCounters(int file) {
    auto counters = std::make_unique<OSADAPT_SPY_COUNTERS>();
    auto* const bytes = reinterpret_cast<char*>(counters.get());
    size_t at = 0;
    while (at < sizeof *counters) {
        const ssize_t count =
            pread(file, bytes + at, sizeof *counters - at, static_cast<off_t>(at));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return nullptr;
        }
        at += count < 0 ? 0 : static_cast<size_t>(count);
    }
    return counters;
}

template <size_t kSize> std::string TextIn(const char (&array)[kSize]) {
    return {array, strnlen(array, kSize)};
}

PortStats StatsOf(const OSADAPT_SPY_PORT& record) {
    PortStats port;
    port.name = TextIn(record.szPortName);
    std::copy(std::begin(record.stCalls), std::end(record.stCalls), port.calls.begin());
    port.bytesIn = record.nBytesIn;
    port.bytesOut = record.nBytesOut;
    port.shortWrites = record.nShortWrites;
    return port;
}

// A port gets its name last; one that was not opened since the counting began has none.
std::vector<PortStats> PortsOf(const OSADAPT_SPY_COUNTERS& counters) {
    std::vector<PortStats> ports;
    const uint32_t count = std::min<uint32_t>(counters.nPortCount, OSADAPT_SPY_MAX_PORTS);
    for (uint32_t i = 0; i < count; ++i) {
        if (counters.stPort[i].szPortName[0] != '\0') {
            ports.push_back(StatsOf(counters.stPort[i]));
        }
    }
    return ports;
}

std::chrono::system_clock::time_point TimeOf(uint64_t nanoseconds) {
    constexpr uint64_t kLast = uint64_t{253402300799} * 1000000000; // of the year 9999
    const auto time = std::chrono::nanoseconds(std::min(nanoseconds, kLast / 2));
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(time));
}

// Null when there is none.
const char* TroubleWith(const OSADAPT_SPY_COUNTERS* counters) {
    if (counters == nullptr ||
        memcmp(counters->szMagic, OSADAPT_SPY_MAGIC, sizeof counters->szMagic) != 0) {
        return "holds no counters";
    }
    const bool isKnown =
        counters->nVersion == OSADAPT_SPY_VERSION && counters->nSize == sizeof *counters;
    return isKnown ? nullptr : "is of another version of the spy";
}

HostStats StatsOfHost(int process, const OSADAPT_SPY_COUNTERS& counters) {
    HostStats stats;
    stats.process = process;
    stats.processName = ProcessName(std::to_string(process));
    stats.adapter = TextIn(counters.szAdapter);
    stats.since = TimeOf(counters.nStartedNs);
    stats.taken = std::chrono::steady_clock::now();
    stats.whole = StatsOf(counters.stAdapter);
    stats.ports = PortsOf(counters);
    stats.portsLeftOut = counters.nPortsLeftOut;
    return stats;
}

} // namespace

StatsFile::StatsFile(int process) : m_Process(process), m_Directory(DirectoryOf(process)) {
    if (m_Directory.empty() || !IsRunning(process)) {
        throw Failure("process " + std::to_string(process) +
                      " is no host of yours that runs with a spy");
    }
}

std::optional<HostStats> StatsFile::Read() const {
    const std::string path = m_Directory + "/counters";
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.IsOpen() && (errno == ENOENT || errno == ENOTDIR)) {
        return std::nullopt;
    }
    struct stat info {};
    if (!file.IsOpen() || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode) ||
        !IsOurs(info)) {
        throw Failure(path + " is no private file of yours");
    }
    const Counters counters = ReadCounters(file.Get());
    if (const char* const trouble = TroubleWith(counters.get()); trouble != nullptr) {
        throw Failure(path + " " + trouble);
    }
    return IsRunning(m_Process) ? std::make_optional(StatsOfHost(m_Process, *counters))
                                : std::nullopt;
}

std::vector<int> SpiedProcesses() {
    std::vector<int> processes;
    for (const std::string& base : Bases()) {
        std::error_code error;
        for (fs::directory_iterator at(base, error), end; !error && at != end;
             at.increment(error)) {
            const int process = ProcessOf(at->path().filename().string());
            if (process != 0 && IsRunning(process) && !DirectoryOf(process).empty()) {
                processes.push_back(process);
            }
        }
    }
    std::sort(processes.begin(), processes.end());
    processes.erase(std::unique(processes.begin(), processes.end()), processes.end());
    return processes;
}
