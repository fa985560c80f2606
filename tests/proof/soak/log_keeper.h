// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_LOG_KEEPER_H
#define KOVASMGR_TESTS_PROOF_SOAK_LOG_KEEPER_H

#include <cstdint>
#include <string>

/// Keeps the log small, as a host that runs for long has to: the log grows while it is open, and is
/// appended to, so that it can be emptied from outside.
class LogKeeper {
  public:
    explicit LogKeeper(std::string file) : m_File(std::move(file)) {}

    /// Empties the log when it has grown beyond 32 MiB.
    void EmptyWhenLarge();

    /// Bytes written since the beginning, save what came while it was emptied.
    uint64_t Written() const;

  private:
    std::string m_File;
    uint64_t m_Emptied = 0;
};

#endif
