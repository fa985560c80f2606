// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_DIRECTORY_H
#define KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_DIRECTORY_H

#include <string>

#include "adapters/shared/unique_fd.h"

/// A host process's control directory: a socket for commands, and for each port a link to its far
/// end. Mode 0700, locked while it is in use, removed at the end; what a dead process left is
/// removed on the way. A directory with files of somebody else in the places of these is refused and
/// left as it is.
///
/// Threads: one at a time.
class ControlDirectory {
  public:
    /// @throws std::runtime_error with the reason
    ControlDirectory();
    ~ControlDirectory();
    ControlDirectory(const ControlDirectory&) = delete;
    ControlDirectory& operator=(const ControlDirectory&) = delete;

    const std::string& Path() const { return m_Path; }

    /// @param name  a plain file name
    /// @return false when the link cannot be made; errno tells why
    bool AddLink(const std::string& name, const std::string& target);
    void RemoveLink(const std::string& name);

  private:
    void OpenChosen(const std::string& path);
    void OpenForThisProcess();
    void Lock();
    void RefuseForeignFiles();

    std::string m_Path;
    std::string m_Name;   // in m_Base
    UniqueFd m_Base;      // the directory above
    UniqueFd m_Directory; // locked
    UniqueFd m_Links;
    bool m_RemoveAtEnd = true; // not a directory that the user had made
};

#endif
