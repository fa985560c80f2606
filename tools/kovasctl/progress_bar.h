// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_PROGRESS_BAR_H
#define KOVASCTL_PROGRESS_BAR_H

#include <cstdint>

#include "tools/kovasctl/waiting.h"

/// How far a long transfer is, on standard error, for a person who watches a terminal.
class ProgressBar {
  public:
    /// @param total  bytes; 0 or nobody watching: nothing is shown
    explicit ProgressBar(uint64_t total);
    ~ProgressBar(); // ends the line
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Show(uint64_t done);

  private:
    uint64_t m_Total;
    Clock::time_point m_Start = Clock::now();
    Clock::time_point m_Next = m_Start;
};

#endif
