// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_FAR_PROGRAM_H
#define KOVASMGR_TESTS_ADAPTERS_FAR_PROGRAM_H

#include <cstddef>
#include <string>

/// A program that has opened the far end of a port.
class FarProgram {
  public:
    /// Throws when the link does not open.
    explicit FarProgram(const std::string& link);
    ~FarProgram();
    FarProgram(const FarProgram&) = delete;
    FarProgram& operator=(const FarProgram&) = delete;

    /// Sends all of it, waiting for room up to 10 s each time. @return whether all went.
    bool Send(const std::string& bytes) const;

    /// Receives this many bytes, or as many as come until 10 s pass without one.
    std::string Receive(size_t count) const;

    /// Whether the line has been hung up, waiting for it up to 10 s.
    bool IsHungUp() const;

    int Terminal() const { return m_Terminal; }

  private:
    int m_Terminal;
};

#endif
