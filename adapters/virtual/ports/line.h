// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_LINE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_LINE_H

#include <memory>
#include <optional>
#include <string>

#include "adapters/shared/open_terminal.h"
#include "adapters/shared/unique_fd.h"
#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/ports/far_end.h"
#include "adapters/virtual/ports/poll_set.h"
#include "adapters/virtual/simulation/pace.h"

/// The line between a host and a far end: a pair of pseudo-terminals. The host's end is the master.
/// The far end is the slave, which this object keeps open, so that a program which opens and closes
/// it does not hang the line up.
///
/// While the host has the port closed, what the far end sends is thrown away, as on a real line.
///
/// Threads: one at a time.
class Line {
  public:
    /// Makes the pair, raw.
    /// @param spec  must outlive the line
    /// @throws std::runtime_error with the reason
    Line(const PortSpec& spec, ScenarioTime now);

    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    const PortSpec& Spec() const { return m_Spec; }

    /// What a program opens to be the far end: "/dev/pts/4".
    const std::string& FarPath() const { return m_FarPath; }

    /// Starts a new opening by the host: nothing that was sent before is seen, neither by the host
    /// nor by a scripted far end. Another program at the far end still finds what it has not
    /// fetched of the opening before.
    /// @return the host's end, with a descriptor of its own
    /// @throws std::runtime_error with the reason
    std::shared_ptr<OpenTerminal> OpenHostEnd();

    bool IsHostOpen() const { return !m_Host.expired(); }

    /// When it is to be served besides what it waits for: bytes arrive, or the far end sends by
    /// itself, which it does up to the end only.
    std::optional<ScenarioTime> Due(ScenarioTime end) const;

    /// Adds what this line waits for besides that time.
    void Watch(PollSet& waiting);

    /// Opens the far end anew when a program has hung the terminal up. An open handle of the host
    /// is dead then; the host can open the port again.
    void MendFarEnd(const PollSet& waited);

    /// Lets the far end take, answer and send what is due.
    void ServeFarEnd(const PollSet& waited, ScenarioTime now, ScenarioTime end);

    /// Throws away what was sent to a host that has the port closed.
    void DiscardForClosedHost(const PollSet& waited);

    /// Sends as if the far end did. To a host that has the port closed, and as far as what waits
    /// to be sent is more than 1 MiB, it is lost.
    void Send(const std::string& bytes);

    /// Whether the far end takes nothing any more; then writes of the host find no room.
    void SetStalled(bool stalled);

  private:
    bool IsServed() const { return m_FarEnd != nullptr && !m_Broken; }
    bool HasUnsent() const { return m_Sent < m_Unsent.size(); }
    bool TakesNow() const;
    void ForgetUnsent();
    void RestartFarEnd();
    bool TakeFromHost(size_t most);
    void TakeArrived(ScenarioTime now);
    void Tick(ScenarioTime now);
    void SendUnsent();

    const PortSpec& m_Spec;
    UniqueFd m_Master;
    UniqueFd m_Slave;
    std::string m_FarPath;
    std::weak_ptr<OpenTerminal> m_Host;
    std::unique_ptr<FarEnd> m_FarEnd;
    std::optional<size_t> m_HostPlace; // of the master in the poll set
    std::optional<size_t> m_Place;     // of the slave
    bool m_Stalled = false;
    std::optional<ArrivalPace> m_Arrivals;     // of the host's bytes; without a baud rate none
    std::optional<ScenarioTime> m_NextArrival; // while bytes are on their way
    bool m_Broken = false;                     // the far end was hung up and does not open any more
    std::string m_Unsent; // taken from the far end, waiting for room in the terminal
    size_t m_Sent = 0;    // so much of it has gone
};

#endif
