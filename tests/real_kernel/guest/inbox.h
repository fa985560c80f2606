// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_INBOX_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_INBOX_H

#include <string>

/// What a port has delivered. Read callbacks are plain functions, so that there are four.
class Inbox {
  public:
    static constexpr int kCount = 4;

    /// Registers inbox `number` with a port and empties it.
    Inbox(int number, int port);

    std::string Received() const;
    bool WaitFor(const std::string& text) const;
    bool WaitForSize(std::size_t size) const;

  private:
    int m_Number;
};

#endif
