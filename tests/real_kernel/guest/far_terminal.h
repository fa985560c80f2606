// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_FAR_TERMINAL_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_FAR_TERMINAL_H

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

/// A terminal in raw mode whose bytes are taken by a thread of its own.
class FarTerminal {
  public:
    /// @throws std::runtime_error when it cannot be opened
    explicit FarTerminal(const std::string& node);
    ~FarTerminal();
    FarTerminal(const FarTerminal&) = delete;
    FarTerminal& operator=(const FarTerminal&) = delete;

    /// Sends everything; gives up after 30 s.
    void Send(const std::string& bytes) const;

    std::string Received() const;
    bool WaitForSize(std::size_t size) const;

  private:
    void Take();

    int m_Terminal;
    std::atomic<bool> m_Ending{false};
    mutable std::mutex m_Mutex;
    std::string m_Received;
    std::thread m_Thread;
};

/// Opens a terminal in raw mode; it does not become this process's own.
int OpenRaw(const std::string& node);

#endif
