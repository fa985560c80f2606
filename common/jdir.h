// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_JDIR_H
#define KOVASMGR_COMMON_JDIR_H

#include <string>

/// A directory of the file system.
class JDir {
  public:
    JDir() = default;
    explicit JDir(const std::string& path) : m_strPath(path) {}

    /// Whether the path is a directory, links followed. What cannot be looked at (no permission, a
    /// name too long for the system) does not exist. Throws nothing but an allocation failure.
    bool exists() const;

    /// The current directory, empty when it cannot be read. Throws nothing but an allocation failure.
    static std::string getCurrentPath();

    /// The character between the parts of a path.
    static char separator() { return '/'; }

  private:
    std::string m_strPath;
};

#endif
