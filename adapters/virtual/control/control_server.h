// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_SERVER_H
#define KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_SERVER_H

#include <chrono>
#include <list>
#include <optional>
#include <string>

#include "adapters/shared/unique_fd.h"
#include "adapters/virtual/control/control_connection.h"
#include "adapters/virtual/ports/poll_set.h"

/// Takes commands at a socket in the control directory.
///
/// Threads: one at a time.
class ControlServer {
  public:
    using Instant = std::chrono::steady_clock::time_point;

    /// @param directory  the control directory's path
    /// @throws std::runtime_error with the reason
    explicit ControlServer(const std::string& directory);

    void Watch(PollSet& waiting);
    void Serve(const PollSet& waited, Director& director, StateNotifier& notifier);

  private:
    void Accept(Instant now);
    bool MakeRoom();

    UniqueFd m_Listener;
    std::optional<size_t> m_Place; // in the poll set
    std::optional<Instant> m_AcceptAgainAt;
    std::list<ControlConnection> m_Connections;
};

#endif
