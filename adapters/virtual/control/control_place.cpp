// SPDX-License-Identifier: MIT
#include "adapters/virtual/control/control_place.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

std::string Variable(const char* name) {
    const char* value = secure_getenv(name);
    return value == nullptr ? "" : value;
}

bool IsPrivateDirectory(const std::string& path) {
    struct stat info {};
    return !path.empty() && path.front() == '/' && lstat(path.c_str(), &info) == 0 &&
           S_ISDIR(info.st_mode) && info.st_uid == geteuid() && (info.st_mode & 022) == 0;
}

} // namespace

std::string ChosenControlDirectory() { return Variable("KOVASMGR_VIRTUAL_DIR"); }

std::vector<std::string> ControlBases() {
    std::vector<std::string> bases;
    const std::string runtime = Variable("XDG_RUNTIME_DIR");
    if (IsPrivateDirectory(runtime)) {
        bases.push_back(runtime + "/kovasmgr");
    }
    bases.push_back("/tmp/kovasmgr-" + std::to_string(geteuid()));
    return bases;
}

bool IsProcessId(const std::string& name) {
    return !name.empty() && name.size() < 10 && name.front() != '0' &&
           std::all_of(name.begin(), name.end(),
                       [](char character) { return character >= '0' && character <= '9'; });
}

bool IsRunning(const std::string& processId) {
    return kill(static_cast<pid_t>(std::stol(processId)), 0) == 0 || errno != ESRCH;
}
