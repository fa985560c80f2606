// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_TERMINAL_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_TERMINAL_H

#include <termios.h>

#include <cstddef>
#include <string>

/// What is attached to a mocked port: the far end of a pseudo-terminal, whose near end stands behind
/// the port's node. The line is hung up when this object ends.
class MockTerminal {
  public:
    MockTerminal();
    ~MockTerminal();
    MockTerminal(const MockTerminal&) = delete;
    MockTerminal& operator=(const MockTerminal&) = delete;

    /// "/dev/pts/3"
    const std::string& NearEnd() const { return m_NearEnd; }

    /// Sends all of it, waiting for room up to 10 s each time. @return whether all went.
    bool Send(const std::string& bytes) const;

    /// Receives this many bytes, or as many as come until 10 s pass without one.
    std::string Receive(size_t count) const;

    /// How the line is set now.
    termios Settings() const;

  private:
    int m_FarEnd;
    std::string m_NearEnd;
};

#endif
