// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_TINY_DISK_H
#define KOVASMGR_TESTS_PROOF_FAILURES_TINY_DISK_H

#include <string>

/// A file system of 64 KiB in memory, mounted on a directory for this process alone: make it in a
/// child process, which has no other thread yet.
class TinyDisk {
  public:
    /// Throws with the system's reason when this process may not mount.
    explicit TinyDisk(const std::string& directory);
    ~TinyDisk();
    TinyDisk(const TinyDisk&) = delete;
    TinyDisk& operator=(const TinyDisk&) = delete;

    /// Takes all the room that is left; what other files have begun, a page each, they may fill.
    void Fill() const;

    /// Gives it back.
    void MakeRoom() const;

  private:
    std::string m_Directory;
};

#endif
