// SPDX-License-Identifier: MIT
#include "tools/kovasctl/state_directory.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/kovasctl/failure.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t kKept = 10;

fs::path AbsoluteVariable(const char* name) {
    const char* value = getenv(name);
    return value != nullptr && *value == '/' ? fs::path(value) : fs::path();
}

fs::path Home() {
    const fs::path home = AbsoluteVariable("HOME");
    const passwd* user = home.empty() ? getpwuid(geteuid()) : nullptr;
    return user == nullptr ? home : fs::path(user->pw_dir);
}

fs::path StateBase() {
    const fs::path state = AbsoluteVariable("XDG_STATE_HOME");
    const fs::path home = state.empty() ? Home() : fs::path();
    if (state.empty() && home.empty()) {
        return {};
    }
    return (state.empty() ? home / ".local/state" : state) / "kovasctl";
}

bool IsOfRunningProcess(const fs::path& directory) {
    const std::string name = directory.filename().string();
    return fs::exists("/proc/" + name.substr(0, name.find('-')));
}

// What is no directory of ours (PID-XXXXXX with at most a log in it) stays.
void Remove(const fs::path& directory) {
    unlink((directory / "KOVASMgr.log").c_str());
    rmdir(directory.c_str());
}

void RemoveOldest(const fs::path& base) {
    std::vector<std::pair<fs::file_time_type, fs::path>> kept;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(base, error)) {
        if (!IsOfRunningProcess(entry.path())) {
            kept.emplace_back(entry.last_write_time(error), entry.path());
        }
    }
    std::sort(kept.begin(), kept.end());
    for (size_t i = 0; i + kKept < kept.size(); ++i) {
        Remove(kept[i].second);
    }
}

std::string MakeBelow(const fs::path& base, const std::string& prefix) {
    std::string name = (base / (prefix + std::to_string(getpid()) + "-XXXXXX")).string();
    return mkdtemp(name.data()) == nullptr ? "" : name;
}

std::string MakeInState() {
    const fs::path base = StateBase();
    std::error_code error;
    if (base.empty()) {
        return "";
    }
    fs::create_directories(base, error);
    RemoveOldest(base);
    return MakeBelow(base, "");
}

std::string MakeInTemporary() {
    const fs::path base = AbsoluteVariable("TMPDIR");
    return MakeBelow(base.empty() ? "/tmp" : base, "kovasctl-");
}

} // namespace

std::string MakeStateDirectory() {
    std::string made = MakeInState();
    if (made.empty()) {
        made = MakeInTemporary();
    }
    if (made.empty()) {
        throw Failure(std::string("no directory for the log can be made: ") + std::strerror(errno) +
                      "; name one by --log-dir");
    }
    return made;
}
