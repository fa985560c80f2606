// SPDX-License-Identifier: MIT
#include "adapters/virtual/control_place.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

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

std::string ControlBase() {
    const std::string runtime = Variable("XDG_RUNTIME_DIR");
    if (IsPrivateDirectory(runtime)) {
        return runtime + "/kovasmgr";
    }
    return "/tmp/kovasmgr-" + std::to_string(geteuid());
}

bool IsProcessId(const std::string& name) {
    return !name.empty() && name.size() < 10 && name.front() != '0' &&
           std::all_of(name.begin(), name.end(),
                       [](char character) { return character >= '0' && character <= '9'; });
}
