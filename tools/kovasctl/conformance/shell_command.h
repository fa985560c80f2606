// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_SHELL_COMMAND_H
#define KOVASCTL_CONFORMANCE_SHELL_COMMAND_H

#include <sys/types.h>

#include <string>

#include "tools/kovasctl/unique_fd.h"

/// A command of the person's, run by the shell. Ends with the object, with all that it has started.
class ShellCommand {
  public:
    /// @param directory  where it runs
    /// @param host       KOVASMGR_HOST_PID, the process that has the adapter loaded
    /// @throws Failure
    ShellCommand(const std::string& text, const std::string& directory, pid_t host);
    ~ShellCommand();
    ShellCommand(const ShellCommand&) = delete;
    ShellCommand& operator=(const ShellCommand&) = delete;

    bool HasEnded();

    /// Why it failed, with the last line that it wrote; empty: it did not. Once it has ended.
    std::string Failure() const;

  private:
    [[noreturn]] void Become(const std::string& text, const std::string& directory,
                             pid_t host) const;
    std::string LastLine() const;

    UniqueFd m_Output;
    pid_t m_Process = -1;
    bool m_HasEnded = false;
    int m_Status = 0;
};

#endif
