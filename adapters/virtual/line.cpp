// SPDX-License-Identifier: MIT
#include "adapters/virtual/line.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>

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

Line::Line(const PortSpec& spec)
    : m_Spec(spec), m_Master(OpenMaster()), m_FarPath(SlavePath(m_Master)) {
    m_Slave = OpenSlave(m_FarPath);
    m_FarEnd = MakeFarEnd(spec, std::chrono::steady_clock::now());
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

void Line::Watch(PollSet& waiting) {
    m_Place.reset();
    if (m_Broken) {
        return;
    }
    if (!IsHostOpen()) {
        waiting.Add(m_Master.Get(), POLLIN);
    }
    const short events = HasUnsent() ? POLLOUT : POLLIN;
    m_Place = waiting.Add(m_Slave.Get(), IsServed() ? events : short{0});
    if (IsServed()) {
        waiting.WakeAt(m_FarEnd->Due());
    }
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

// While an answer waits for room nothing more is taken, so the host's writes come to a stop too and
// what has to be kept is bounded.
void Line::ServeFarEnd(FarEnd::Instant now) {
    if (!IsServed()) {
        return;
    }
    if (!HasUnsent()) {
        TakeFromHost();
    }
    const auto due = m_FarEnd->Due();
    if (due && *due <= now) {
        std::string text = m_FarEnd->Tick(now);
        // A line without flow control loses what the host does not fetch.
        if (!HasUnsent()) {
            ForgetUnsent();
            m_Unsent = std::move(text);
        }
    }
    SendToHost();
}

void Line::DiscardForClosedHost() {
    if (!IsHostOpen() && !m_Broken) {
        DiscardArrived(m_Master.Get());
    }
}

void Line::ForgetUnsent() {
    m_Unsent.clear();
    m_Sent = 0;
}

void Line::RestartFarEnd() {
    tcflow(m_Slave.Get(), TCOON); // a program may have stopped the output for good
    DiscardArrived(m_Slave.Get());
    ForgetUnsent();
    m_FarEnd->Restart();
}

void Line::TakeFromHost() {
    char buffer[kPiece];
    for (size_t i = 0; i < kMaxPieces && m_Unsent.size() < kMaxUnsent; ++i) {
        const Transfer got = ReadAvailable(m_Slave.Get(), buffer, sizeof buffer);
        if (got.count == 0) {
            return;
        }
        m_Unsent += m_FarEnd->Take(std::string(buffer, got.count));
    }
}

void Line::SendToHost() {
    const Transfer sent =
        WriteAvailable(m_Slave.Get(), m_Unsent.data() + m_Sent, m_Unsent.size() - m_Sent);
    m_Sent += sent.count;
    if (!HasUnsent()) {
        ForgetUnsent();
    }
}
