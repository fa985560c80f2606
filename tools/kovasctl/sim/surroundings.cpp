// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/surroundings.h"

#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/kovasctl/failure.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kDirectoryVariable = "KOVASMGR_VIRTUAL_DIR";

void Set(const char* name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name);
    } else {
        setenv(name, value.c_str(), 1);
    }
}

std::string Absolute(const std::string& file) {
    return file.empty() ? "" : fs::absolute(file).lexically_normal().string();
}

std::string Variable(const char* name) {
    const char* value = getenv(name);
    return value == nullptr ? "" : value;
}

bool IsPrivateDirectory(const std::string& path) {
    struct stat info {};
    return !path.empty() && path.front() == '/' && lstat(path.c_str(), &info) == 0 &&
           S_ISDIR(info.st_mode) && info.st_uid == geteuid() && (info.st_mode & 022) == 0;
}

// The same that the adapter uses by itself, so that its command finds the simulation there.
std::string Base() {
    const std::string runtime = Variable("XDG_RUNTIME_DIR");
    return IsPrivateDirectory(runtime) ? runtime + "/kovasmgr"
                                       : "/tmp/kovasmgr-" + std::to_string(geteuid());
}

std::string MakeBase() {
    std::string base = Base();
    const bool isThere = mkdir(base.c_str(), S_IRWXU) == 0 || errno == EEXIST;
    if (!isThere || !IsPrivateDirectory(base)) {
        throw Failure(base + " is no directory of yours alone; name another one by " +
                      kDirectoryVariable);
    }
    return base;
}

} // namespace

void SetVariables(const SimSettings& settings, const std::string& simulator) {
    Set("KOVASMGR_VIRTUAL_SCENARIO", Absolute(settings.scenario));
    Set("KOVASMGR_VIRTUAL_SEED", settings.seed);
    Set("KOVASMGR_VIRTUAL_SPEED", settings.speed);
    Set("KOVASMGR_VIRTUAL_EVENTS", Absolute(settings.events));
    Set("KOVASMGR_SPY_ADAPTER", simulator);
    if (!settings.recording.empty()) {
        Set("KOVASMGR_SPY_RECORD", Absolute(settings.recording));
    }
}

SimControl::SimControl() : m_Path(Variable(kDirectoryVariable)) {
    if (m_Path.empty()) {
        m_Path = MakeBase() + "/" + std::to_string(getpid());
        m_IsOurs = true;
        Set(kDirectoryVariable, m_Path);
    }
}

SimControl::~SimControl() {
    if (m_IsOurs) {
        std::error_code error;
        fs::remove_all(m_Path, error); // nobody else may write there
    }
}

void RaiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}
