// SPDX-License-Identifier: MIT
#include "adapters/spy/counter_directory.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/private_directory.h"

namespace {

constexpr const char* kFile = "counters";

bool IsFit(const std::string& directory) {
    struct stat info {};
    return !directory.empty() && directory.front() == '/' && lstat(directory.c_str(), &info) == 0 &&
           S_ISDIR(info.st_mode) && info.st_uid == geteuid() && (info.st_mode & 022) == 0;
}

std::string Base() {
    const char* const variable = secure_getenv("XDG_RUNTIME_DIR");
    const std::string runtime = variable == nullptr ? "" : variable;
    return IsFit(runtime) ? runtime + "/kovasmgr-spy"
                          : "/tmp/kovasmgr-spy-" + std::to_string(geteuid());
}

bool IsProcessId(const std::string& name) {
    return !name.empty() && name.size() < 10 && name.front() != '0' &&
           std::all_of(name.begin(), name.end(),
                       [](char character) { return character >= '0' && character <= '9'; });
}

bool IsRunning(const std::string& processId) {
    return kill(static_cast<pid_t>(std::stol(processId)), 0) == 0 || errno != ESRCH;
}

bool IsLocked(const UniqueFd& directory) { return flock(directory.Get(), LOCK_EX | LOCK_NB) != 0; }

// The process identifier alone would remove the directory of a host in another container, the lock
// alone that of a host which has not locked it yet.
void RemoveIfStale(int base, const std::string& name) {
    if (!IsProcessId(name) || IsRunning(name)) {
        return;
    }
    const UniqueFd directory(
        openat(base, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (directory.IsOpen() && !IsLocked(directory)) {
        unlinkat(directory.Get(), kFile, 0);
        unlinkat(base, name.c_str(), AT_REMOVEDIR);
    }
}

} // namespace

CounterDirectory::CounterDirectory()
    : m_Owner(getpid()), m_Name(std::to_string(m_Owner)),
      m_Base(OpenPrivateDirectory(AT_FDCWD, Base(), nullptr)) {
    for (const std::string& name : NamesIn(m_Base.Get())) {
        RemoveIfStale(m_Base.Get(), name);
    }
    m_Directory = OpenPrivateDirectory(m_Base.Get(), m_Name, nullptr);
    if (IsLocked(m_Directory)) {
        throw std::runtime_error("directory '" + Printable(Base() + "/" + m_Name) +
                                 "' is in use by another spy");
    }
}

CounterDirectory::~CounterDirectory() {
    if (m_Owner == getpid()) {
        unlinkat(m_Directory.Get(), kFile, 0);
        unlinkat(m_Base.Get(), m_Name.c_str(), AT_REMOVEDIR);
    }
}

UniqueFd CounterDirectory::MakeFile() {
    unlinkat(m_Directory.Get(), kFile, 0);
    UniqueFd file(
        openat(m_Directory.Get(), kFile, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.IsOpen()) {
        throw std::runtime_error("no file for counters can be made: " + ErrnoText(errno));
    }
    return file;
}
