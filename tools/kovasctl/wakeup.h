// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_WAKEUP_H
#define KOVASCTL_WAKEUP_H

#include "tools/kovasctl/unique_fd.h"

/// How a callback wakes the main thread: a descriptor that can be read while there is something.
class Wakeup {
  public:
    /// @throws Failure
    Wakeup();

    int Descriptor() const { return m_Counter.Get(); }
    void Set();
    void Clear();

  private:
    UniqueFd m_Counter;
};

#endif
