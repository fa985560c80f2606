// SPDX-License-Identifier: MIT
#include "tests/proof/failures/tiny_disk.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

void Require(bool isDone, const char* what) {
    if (!isDone) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

void WriteFile(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    Require(file != -1 && write(file, text.data(), text.size()) != -1, path);
    close(file);
}

// Whoever is not root becomes it, in a user name space of his own.
void LeaveNameSpace() {
    if (unshare(CLONE_NEWNS) == 0) {
        return;
    }
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    Require(unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "no name space for mounting");
    WriteFile("/proc/self/setgroups", "deny");
    WriteFile("/proc/self/uid_map", "0 " + user + " 1");
    WriteFile("/proc/self/gid_map", "0 " + group + " 1");
}

std::string FillerOf(const std::string& directory) { return directory + "/filler"; }

} // namespace

TinyDisk::TinyDisk(const std::string& directory) : m_Directory(directory) {
    LeaveNameSpace();
    Require(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "no private mounts");
    Require(mount("tmpfs", directory.c_str(), "tmpfs", 0, "size=64k") == 0, "no tmpfs");
}

TinyDisk::~TinyDisk() { umount2(m_Directory.c_str(), MNT_DETACH); }

void TinyDisk::Fill() const {
    const int file = open(FillerOf(m_Directory).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    Require(file != -1, "no filler");
    const std::string page(4096, 'x');
    while (write(file, page.data(), page.size()) > 0) {
    }
    const int error = errno;
    close(file);
    Require((errno = error) == ENOSPC, "not full");
}

void TinyDisk::MakeRoom() const {
    Require(unlink(FillerOf(m_Directory).c_str()) == 0, "the filler stays");
}
