// SPDX-License-Identifier: MIT
#include "adapters/virtual/control_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <stdexcept>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/control_place.h"
#include "adapters/virtual/private_directory.h"

namespace {

bool IsLocked(const UniqueFd& directory) { return flock(directory.Get(), LOCK_EX | LOCK_NB) != 0; }

void RemoveLinks(int links) {
    for (const std::string& name : NamesIn(links)) {
        unlinkat(links, name.c_str(), 0);
    }
}

void RemoveContents(int directory) {
    unlinkat(directory, kControlSocket, 0);
    const UniqueFd links(
        openat(directory, kPortLinks, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (links.IsOpen()) {
        RemoveLinks(links.Get());
        unlinkat(directory, kPortLinks, AT_REMOVEDIR);
    }
}

// The process identifier alone would remove the directory of a host in another container, the lock
// alone that of a host which has not locked it yet.
void RemoveIfStale(int base, const std::string& name) {
    if (!IsProcessId(name) || IsRunning(name)) {
        return;
    }
    const UniqueFd directory(
        openat(base, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (directory.IsOpen() && !IsLocked(directory)) {
        RemoveContents(directory.Get());
        unlinkat(base, name.c_str(), AT_REMOVEDIR);
    }
}

} // namespace

ControlDirectory::ControlDirectory() {
    const std::string chosen = ChosenControlDirectory();
    if (chosen.empty()) {
        OpenForThisProcess();
    } else {
        OpenChosen(chosen);
    }
    Lock();
    RemoveContents(m_Directory.Get());
    m_Links = OpenPrivateDirectory(m_Directory.Get(), kPortLinks, nullptr);
}

ControlDirectory::~ControlDirectory() {
    m_Links.Reset();
    RemoveContents(m_Directory.Get());
    if (m_RemoveAtEnd) {
        unlinkat(m_Base.Get(), m_Name.c_str(), AT_REMOVEDIR);
    }
}

std::string ControlDirectory::SocketPath() const { return m_Path + "/" + kControlSocket; }

bool ControlDirectory::AddLink(const std::string& name, const std::string& target) {
    return symlinkat(target.c_str(), m_Links.Get(), name.c_str()) == 0;
}

void ControlDirectory::RemoveLink(const std::string& name) {
    unlinkat(m_Links.Get(), name.c_str(), 0);
}

void ControlDirectory::OpenChosen(const std::string& path) {
    if (path.front() != '/') {
        throw std::runtime_error("KOVASMGR_VIRTUAL_DIR must be an absolute path, not '" +
                                 Printable(path) + "'");
    }
    m_Path = path;
    m_Name = path;
    m_Directory = OpenPrivateDirectory(AT_FDCWD, path, &m_RemoveAtEnd);
}

void ControlDirectory::OpenForThisProcess() {
    const std::string base = ControlBases().front();
    m_Base = OpenPrivateDirectory(AT_FDCWD, base, nullptr);
    for (const std::string& name : NamesIn(m_Base.Get())) {
        RemoveIfStale(m_Base.Get(), name);
    }
    m_Name = std::to_string(getpid());
    m_Path = base + "/" + m_Name;
    m_Directory = OpenPrivateDirectory(m_Base.Get(), m_Name, nullptr);
}

void ControlDirectory::Lock() {
    if (IsLocked(m_Directory)) {
        throw std::runtime_error("directory '" + Printable(m_Path) + "' is in use by another host");
    }
}
