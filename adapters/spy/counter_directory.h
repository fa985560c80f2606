// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_COUNTER_DIRECTORY_H
#define KOVASMGR_ADAPTERS_SPY_COUNTER_DIRECTORY_H

#include <sys/types.h>

#include <string>

#include "adapters/shared/unique_fd.h"

/// This process's directory for counters, private and locked; OSAdaptSpy.h says where. What killed
/// hosts have left is removed on the way.
///
/// Threads: one at a time. To be used behind a CancelShield.
class CounterDirectory {
  public:
    /// @throws std::runtime_error with the reason
    CounterDirectory();

    /// Removes it with the file, unless this is a forked child.
    ~CounterDirectory();
    CounterDirectory(const CounterDirectory&) = delete;
    CounterDirectory& operator=(const CounterDirectory&) = delete;

    /// Makes the file, empty and of mode 0600.
    /// @throws std::runtime_error with the reason
    UniqueFd MakeFile();

  private:
    pid_t m_Owner;
    std::string m_Name;
    UniqueFd m_Base;      // the directory above
    UniqueFd m_Directory; // locked
};

#endif
