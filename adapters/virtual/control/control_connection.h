// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_CONNECTION_H
#define KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_CONNECTION_H

#include <chrono>
#include <optional>
#include <string>

#include "adapters/shared/unique_fd.h"
#include "adapters/virtual/control/control_commands.h"
#include "adapters/virtual/ports/poll_set.h"

/// One person or program that gives commands, a line each, and reads the replies. Nothing here
/// blocks, and what a client can make it keep is bounded: the next command is taken when the reply
/// to the last one has been sent.
///
/// Threads: one at a time.
class ControlConnection {
  public:
    using Instant = std::chrono::steady_clock::time_point;

    ControlConnection(UniqueFd socket, Instant now)
        : m_Socket(std::move(socket)), m_LastUsed(now) {}

    void Watch(PollSet& waiting);

    /// Goes on as far as possible after a wait.
    void Serve(const PollSet& waited, Director& director, StateNotifier& notifier, Instant now);

    bool IsOver() const { return m_Over; }
    bool IsWaitingForNotice() const { return m_Notice.has_value(); }
    Instant LastUsed() const { return m_LastUsed; }

  private:
    struct Notice {
        uint64_t ticket;
        std::string text;
        Instant giveUpAt;
    };

    bool IsIdle() const { return !m_Notice && m_Output.empty(); }
    void Receive(Instant now);
    void Send();
    void FinishNotice(StateNotifier& notifier, Instant now);
    bool RunNextLine(Director& director, Instant now);

    UniqueFd m_Socket;
    Instant m_LastUsed;
    std::optional<size_t> m_Place; // in the poll set
    std::string m_Input;
    std::string m_Output;
    std::optional<Notice> m_Notice; // the reply that waits for the host
    bool m_InputEnded = false;
    bool m_Over = false;
};

#endif
