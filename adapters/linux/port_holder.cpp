// SPDX-License-Identifier: MIT
#include "adapters/linux/port_holder.h"

#include <dirent.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/text_file.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kSearchTime{250};
constexpr int kMaxHolders = 3;

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

// The name of the next entry that is a number; empty at the end.
std::string NextNumber(const Directory& directory) {
    while (directory != nullptr) {
        const dirent* entry = readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        if (entry->d_name[0] >= '0' && entry->d_name[0] <= '9') {
            return entry->d_name;
        }
    }
    return "";
}

// The link is read before it is followed: a file on a server that is gone would hang us.
bool IsTerminal(const std::string& descriptor, dev_t number) {
    char path[PATH_MAX] = "";
    const ssize_t length = readlink(descriptor.c_str(), path, sizeof path - 1);
    if (length <= 0 || std::string(path, 5) != "/dev/") {
        return false;
    }
    struct stat info {};
    return stat(descriptor.c_str(), &info) == 0 && S_ISCHR(info.st_mode) && info.st_rdev == number;
}

bool HasOpen(const std::string& process, dev_t number, Clock::time_point deadline) {
    const std::string folder = "/proc/" + process + "/fd";
    const Directory descriptors(opendir(folder.c_str()));
    std::string descriptor = NextNumber(descriptors);
    while (!descriptor.empty() && Clock::now() < deadline) {
        if (IsTerminal(std::string(folder).append("/").append(descriptor), number)) {
            return true;
        }
        descriptor = NextNumber(descriptors);
    }
    return false;
}

// A program chooses its name itself.
std::string Describe(const std::string& process) {
    if (process == std::to_string(getpid())) {
        return "this program itself";
    }
    std::string name = ReadTextFile("/proc/" + process + "/comm").text;
    name.erase(std::min(name.find_last_not_of('\n') + 1, name.size()));
    return (name.empty() ? "" : Printable(name) + " ") + "(process " + process + ")";
}

} // namespace

std::string PortHolders(dev_t number) {
    const auto deadline = Clock::now() + kSearchTime;
    const Directory processes(opendir("/proc"));
    std::string holders;
    int count = 0;
    std::string process = NextNumber(processes);
    while (!process.empty() && count < kMaxHolders && Clock::now() < deadline) {
        if (HasOpen(process, number, deadline)) {
            holders += count++ == 0 ? "" : ", ";
            holders += Describe(process);
        }
        process = NextNumber(processes);
    }
    return holders;
}
