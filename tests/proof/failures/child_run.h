// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_CHILD_RUN_H
#define KOVASMGR_TESTS_PROOF_FAILURES_CHILD_RUN_H

#include <sys/types.h>

#include <functional>
#include <string>

/// What a run in a child process came to.
struct ChildReport {
    bool isReached = false; ///< whether the fault struck
    std::string text;       ///< what did not hold, a line each; empty: everything held
};

/// Runs a task in a process of its own, beside others: a crash, or a hang of more than 50 s, ends
/// that process and is one more line of the report. Standard output of the task goes nowhere.
class ChildRun {
  public:
    explicit ChildRun(const std::function<ChildReport()>& task);
    ChildRun(ChildRun&& other) noexcept;
    ~ChildRun();
    ChildRun& operator=(ChildRun&&) = delete;

    /// Waits for the end of the process. Once.
    ChildReport Wait();

  private:
    pid_t m_Process;
    int m_Pipe;
};

#endif
