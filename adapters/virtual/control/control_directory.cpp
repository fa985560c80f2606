// SPDX-License-Identifier: MIT
#include "adapters/virtual/control/control_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/private_directory.h"
#include "adapters/virtual/control/control_place.h"

namespace {

bool IsLocked(const UniqueFd& directory) { return flock(directory.Get(), LOCK_EX | LOCK_NB) != 0; }

// @return the file's type as in st_mode, 0 when there is none.
mode_t TypeOf(int directory, const std::string& name) {
    struct stat info {};
    const bool isThere = fstatat(directory, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0;
    return isThere ? info.st_mode & S_IFMT : 0;
}

void RemoveIfOfType(int directory, const std::string& name, mode_t type) {
    if (TypeOf(directory, name) == type) {
        unlinkat(directory, name.c_str(), 0);
    }
}

UniqueFd OpenLinks(int directory) {
    return UniqueFd(openat(directory, kPortLinks, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// What no host can have left there, so that it is somebody's file.
// @return its name, empty when there is none.
std::string ForeignName(int directory) {
    for (const char* const name : {kDeafSocket, kControlSocket}) {
        if (const mode_t type = TypeOf(directory, name); type != 0 && type != S_IFSOCK) {
            return name;
        }
    }
    if (const mode_t type = TypeOf(directory, kPortLinks); type != 0 && type != S_IFDIR) {
        return kPortLinks;
    }
    const UniqueFd links = OpenLinks(directory);
    if (!links.IsOpen()) {
        return "";
    }
    for (const std::string& name : NamesIn(links.Get())) {
        if (TypeOf(links.Get(), name) != S_IFLNK) {
            return std::string(kPortLinks) + "/" + name;
        }
    }
    return "";
}

void RemoveLinks(int links) {
    for (const std::string& name : NamesIn(links)) {
        RemoveIfOfType(links, name, S_IFLNK);
    }
}

// Only what a host makes; a user's file of the same name stays.
void RemoveContents(int directory) {
    RemoveIfOfType(directory, kDeafSocket, S_IFSOCK);
    RemoveIfOfType(directory, kControlSocket, S_IFSOCK);
    const UniqueFd links = OpenLinks(directory);
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
    RefuseForeignFiles();
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

void ControlDirectory::RefuseForeignFiles() {
    if (const std::string name = ForeignName(m_Directory.Get()); !name.empty()) {
        throw std::runtime_error("directory '" + Printable(m_Path) + "' holds '" + Printable(name) +
                                 "', which no host has left there; choose an empty directory");
    }
}
