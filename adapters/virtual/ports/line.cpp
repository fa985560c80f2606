// SPDX-License-Identifier: MIT
#include "adapters/virtual/ports/line.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/terminal.h"

namespace {

// The far end is given this much at a time and asked no more when its answers have that many bytes.
// A reply has up to about 1 KiB for every other byte that is taken.
constexpr size_t kPiece = 64;
constexpr size_t kMaxUnsent = size_t{64} * 1024;

// What a scenario lets the far end send may wait for longer.
constexpr size_t kMaxWaiting = size_t{1024} * 1024;

// With a baud rate, how often a far end looks at what has arrived.
constexpr ScenarioTime kArrivalStep{1000};

// How much is taken before other lines are looked after.
constexpr size_t kMaxPieces = 64;

[[noreturn]] void Fail(const std::string& what, int error) {
    std::string advice;
    if (error == EMFILE) {
        advice = "; the host has too many descriptors open, raise its limit (ulimit -n)";
    } else if (error == ENOSPC || error == ENOENT) {
        advice = "; see /proc/sys/kernel/pty/max and whether /dev/pts is mounted";
    }
    throw std::runtime_error(what + ": " + ErrnoText(error) + advice);
}

UniqueFd OpenMaster() {
    UniqueFd master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    if (!master.IsOpen()) {
        Fail("no pseudo-terminal", errno);
    }
    if (grantpt(master.Get()) != 0 || unlockpt(master.Get()) != 0) {
        Fail("pseudo-terminal cannot be unlocked", errno);
    }
    return master;
}

std::string SlavePath(const UniqueFd& master) {
    char path[64] = "";
    if (const int error = ptsname_r(master.Get(), path, sizeof path); error != 0) {
        Fail("pseudo-terminal has no name", error);
    }
    return path;
}

UniqueFd OpenSlave(const std::string& path) {
    UniqueFd slave(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    if (!slave.IsOpen()) {
        Fail("cannot open " + path, errno);
    }
    if (const int error = MakeRaw(slave.Get()); error != 0) {
        Fail("cannot make " + path + " raw", error);
    }
    return slave;
}

} // namespace

Line::Line(const PortSpec& spec, ScenarioTime now)
    : m_Spec(spec), m_Master(OpenMaster()), m_FarPath(SlavePath(m_Master)) {
    m_Slave = OpenSlave(m_FarPath);
    m_FarEnd = MakeFarEnd(spec, now);
    if (m_FarEnd != nullptr && m_FarEnd->IsAnswering() && spec.baud) {
        m_Arrivals.emplace(ByteTime(*spec.baud));
    }
}

std::shared_ptr<OpenTerminal> Line::OpenHostEnd() {
    // A program at the far end may have left the terminal in any state.
    if (const int error = MakeRaw(m_Slave.Get()); error != 0) {
        Fail("cannot make " + m_FarPath + " raw", error);
    }
    UniqueFd descriptor(fcntl(m_Master.Get(), F_DUPFD_CLOEXEC, 0));
    if (!descriptor.IsOpen()) {
        Fail("cannot open the host's end", errno);
    }
    ForgetUnsent();
    if (m_FarEnd != nullptr) {
        RestartFarEnd();
    }
    // An external far end is another program: what the host sent it is in its terminal, as in the
    // receive buffer of a real device, and stays there for it.
    DiscardArrived(m_Master.Get());
    auto host = std::make_shared<OpenTerminal>(std::move(descriptor));
    m_Host = host;
    return host;
}

std::optional<ScenarioTime> Line::Due(ScenarioTime end) const {
    const auto tick = IsServed() ? m_FarEnd->Due() : std::nullopt;
    const auto arrival = TakesNow() ? m_NextArrival : std::nullopt;
    if (!tick || *tick > end) {
        return arrival;
    }
    return std::min(*tick, arrival.value_or(*tick));
}

void Line::Watch(PollSet& waiting) {
    m_HostPlace.reset();
    m_Place.reset();
    if (m_Broken) {
        return;
    }
    if (!IsHostOpen()) {
        m_HostPlace = waiting.Add(m_Master.Get(), POLLIN);
    }
    const int events = (HasUnsent() ? POLLOUT : 0) | (TakesNow() && !m_NextArrival ? POLLIN : 0);
    m_Place = waiting.Add(m_Slave.Get(), static_cast<short>(events));
}

void Line::MendFarEnd(const PollSet& waited) {
    if (!m_Place || (waited.Seen(*m_Place) & POLLHUP) == 0) {
        return;
    }
    LogError("the far end of port '" + Printable(m_Spec.name) + "' was hung up by a program");
    try {
        m_Slave = OpenSlave(m_FarPath);
    } catch (const std::runtime_error& error) {
        m_Broken = true; // waiting for it would not wait any more
        LogError(std::string("replug the device: ") + error.what());
    }
}

void Line::ServeFarEnd(const PollSet& waited, ScenarioTime now, ScenarioTime end) {
    SendUnsent();
    const bool hasInput = m_Place && (waited.Seen(*m_Place) & POLLIN) != 0;
    if (!m_Arrivals && hasInput && TakesNow()) {
        TakeFromHost(kMaxPieces * kPiece);
    } else if (m_Arrivals && hasInput && !m_NextArrival) {
        m_Arrivals->Restart(now);
        m_NextArrival = now;
    }
    if (m_NextArrival && *m_NextArrival <= now && TakesNow()) {
        TakeArrived(now);
    }
    Tick(std::min(now, end));
    SendUnsent();
}

void Line::DiscardForClosedHost(const PollSet& waited) {
    if (m_HostPlace && waited.Seen(*m_HostPlace) != 0 && !IsHostOpen() && !m_Broken) {
        DiscardArrived(m_Master.Get());
    }
}

void Line::Send(const std::string& bytes) {
    if (IsHostOpen() && !m_Broken) {
        m_Unsent.erase(0, m_Sent);
        m_Sent = 0;
        m_Unsent.append(bytes, 0, kMaxWaiting - std::min(m_Unsent.size(), kMaxWaiting));
        SendUnsent();
    }
}

// By the kernel: it takes nothing from the host while the host's end is stopped. What it has taken
// before stays where it is.
void Line::SetStalled(bool stalled) {
    m_Stalled = stalled;
    tcflow(m_Master.Get(), stalled ? TCOOFF : TCOON);
}

// While an answer waits for room nothing more is taken, so the host's writes come to a stop too and
// what has to be kept is bounded.
bool Line::TakesNow() const {
    return IsServed() && !m_Stalled && (!HasUnsent() || !m_FarEnd->IsAnswering());
}

void Line::ForgetUnsent() {
    m_Unsent.clear();
    m_Sent = 0;
}

void Line::RestartFarEnd() {
    tcflow(m_Slave.Get(), TCOON); // a program may have stopped the output for good
    DiscardArrived(m_Slave.Get());
    m_NextArrival.reset();
    m_FarEnd->Restart();
}

// @return whether that was all.
bool Line::TakeFromHost(size_t most) {
    char buffer[kPiece];
    for (size_t taken = 0; taken < most && m_Unsent.size() < kMaxUnsent;) {
        const Transfer got =
            ReadAvailable(m_Slave.Get(), buffer, std::min(sizeof buffer, most - taken));
        if (got.count == 0) {
            return true;
        }
        taken += got.count;
        m_Unsent += m_FarEnd->Take(std::string(buffer, got.count));
    }
    return false;
}

// With a baud rate: no more than can have arrived by now.
void Line::TakeArrived(ScenarioTime now) {
    const size_t arrived = m_Arrivals->Arrived(now);
    const bool isAll = arrived > 0 && TakeFromHost(arrived);
    m_Arrivals->Took(arrived, isAll, now);
    m_NextArrival = now + kArrivalStep;
    if (isAll) {
        m_NextArrival.reset();
    }
}

void Line::Tick(ScenarioTime now) {
    const auto due = IsServed() ? m_FarEnd->Due() : std::nullopt;
    if (!due || *due > now) {
        return;
    }
    const std::string text = m_FarEnd->Tick(now);
    // A line without flow control loses what the host does not fetch.
    if (!HasUnsent()) {
        m_Unsent = text;
    }
}

void Line::SendUnsent() {
    if (!HasUnsent()) {
        return;
    }
    const Transfer sent =
        WriteAvailable(m_Slave.Get(), m_Unsent.data() + m_Sent, m_Unsent.size() - m_Sent);
    m_Sent += sent.count;
    if (!HasUnsent()) {
        ForgetUnsent();
    }
}
