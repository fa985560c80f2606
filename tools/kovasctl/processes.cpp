// SPDX-License-Identifier: MIT
#include "tools/kovasctl/processes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

namespace fs = std::filesystem;

// The link is read before it is followed: a file on a server that is gone would hang us.
bool IsTerminal(const fs::path& descriptor, dev_t terminal) {
    std::error_code error;
    if (fs::read_symlink(descriptor, error).string().compare(0, 5, "/dev/") != 0) {
        return false;
    }
    struct stat info {};
    return stat(descriptor.c_str(), &info) == 0 && S_ISCHR(info.st_mode) &&
           info.st_rdev == terminal;
}

std::vector<fs::path> EntriesOf(const fs::path& directory) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator at(directory, error), end; !error && at != end;
         at.increment(error)) {
        entries.push_back(at->path());
    }
    return entries;
}

} // namespace

std::vector<std::string> OtherProcesses() {
    std::vector<std::string> processes;
    for (const fs::path& entry : EntriesOf("/proc")) {
        const std::string name = entry.filename().string();
        if (name.find_first_not_of("0123456789") == std::string::npos &&
            name != std::to_string(getpid())) {
            processes.push_back(name);
        }
    }
    return processes;
}

std::string ProcessName(const std::string& process) {
    std::ifstream file("/proc/" + process + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

bool HasTerminalOpen(const std::string& process, dev_t terminal) {
    for (const fs::path& descriptor : EntriesOf("/proc/" + process + "/fd")) {
        if (IsTerminal(descriptor, terminal)) {
            return true;
        }
    }
    return false;
}
