// SPDX-License-Identifier: MIT
#include "tools/kovasctl/terminal_session.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "tools/kovasctl/byte_text.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/line_settings.h"
#include "tools/kovasctl/printable.h"

namespace {

// Between attempts to open a port that is there, and to send to one without room.
constexpr std::chrono::milliseconds kRetry{500};
constexpr std::chrono::milliseconds kNoRoom{20};

// Small, so that other work waits little for a slow line.
constexpr size_t kMostAtOnce = 1024;

// A paste that the port does not take must not grow for ever.
constexpr size_t kMostPending = size_t{1} << 20;

std::string WithLineEnd(const std::string& typed, const std::string& lineEnd) {
    std::string bytes;
    for (const char c : typed) {
        bytes += c == '\r' ? lineEnd : std::string(1, c);
    }
    return bytes;
}

} // namespace

TerminalSession::TerminalSession(const GlobalOptions& global, const TerminalOptions& options)
    : m_Options(options), m_Keys(options.escape.front()),
      m_Screen(options.logFile, options.hasEcho, options.isHex), m_Library(global) {}

void TerminalSession::Run() {
    Greet();
    OnNotices();
    Connect();
    while (!m_IsEnded) {
        Wait();
        FetchReceived();
        OnNotices();
        FetchTyped();
        SendPending();
        Connect();
    }
}

void TerminalSession::Greet() {
    m_Screen.Tell(m_Keys.KeyName() + " q quits, " + m_Keys.KeyName() + " ? shows all keys");
}

std::vector<ChosenPort> TerminalSession::Candidates() const {
    return m_Last ? FindAgain(m_Present, *m_Last, m_Options.port)
                  : MatchPorts(m_Present, m_Options.port);
}

void TerminalSession::Connect() {
    if (m_Port || m_IsEnded) {
        return;
    }
    const std::vector<ChosenPort> candidates = Candidates();
    if (candidates.size() > 1) {
        FailAmbiguous(m_Options.port, candidates);
    }
    if (candidates.size() == 1) {
        Open(candidates.front());
    } else if (m_Options.isOnce) {
        ChoosePort(m_Present, m_Options.port); // says that there is none
    } else {
        TellOnce("waiting for " + Printable(m_Options.port));
    }
}

// The first time a port that does not open is an error. Later it may be one that is just coming.
void TerminalSession::Open(const ChosenPort& port) {
    try {
        m_Port.emplace(m_Library, port, m_Options.line);
    } catch (const Failure& failure) {
        if (!m_Last) {
            throw;
        }
        TellOnce(failure.what());
        return;
    }
    m_Last = port;
    m_Told.clear();
    m_Screen.Tell("connected to " + Printable(port.port.name) + " of " +
                  Printable(port.deviceName));
}

void TerminalSession::OnLost(const std::string& why) {
    FetchReceived(); // what it sent last
    m_Port.reset();
    m_Pending.clear();
    if (m_Options.isOnce) {
        throw Failure(why);
    }
    m_Screen.Tell(why + "; waiting for it");
    m_Told = "waiting for " + Printable(m_Options.port);
}

void TerminalSession::TellOnce(const std::string& message) {
    if (message != m_Told) {
        m_Told = message;
        m_Screen.Tell(message);
    }
}

void TerminalSession::Wait() {
    Deadline deadline;
    if (!m_Port && !Candidates().empty()) {
        deadline = Clock::now() + kRetry;
    } else if (!m_Pending.empty()) {
        deadline = Clock::now() + kNoRoom;
    }
    const int received = m_Port ? m_Port->Received().Descriptor() : -1;
    WaitForInput({STDIN_FILENO, m_Notices.Descriptor(), received}, deadline);
}

void TerminalSession::OnNotices() {
    for (Notices::Notice& notice : m_Notices.Take()) {
        m_Present = std::move(notice.snapshot);
        if (m_Port && !IsPresent(m_Present, m_Port->Chosen())) {
            OnLost(Printable(m_Port->Chosen().port.name) + " went away");
        }
    }
}

void TerminalSession::FetchReceived() {
    if (m_Port) {
        m_Screen.ShowReceived(m_Port->Received().Take());
    }
}

void TerminalSession::FetchTyped() {
    if (!IsReadable(STDIN_FILENO)) {
        return;
    }
    char buffer[4096];
    const ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) {
        throw Interrupted{SIGHUP}; // the terminal has gone
    }
    if (count > 0) {
        const std::string typed = m_Keys.Typed(std::string(buffer, static_cast<size_t>(count)),
                                               [this](auto command) { OnCommand(command); });
        m_Screen.ShowTyped(typed);
        m_Pending += m_Port ? WithLineEnd(typed, LineEnd(m_Options.lineEnd)) : "";
    }
}

void TerminalSession::SendPending() {
    if (!m_Port || m_Pending.empty()) {
        return;
    }
    try {
        m_Pending.erase(0, m_Port->Write(std::string_view(m_Pending).substr(0, kMostAtOnce)));
    } catch (const Failure& failure) {
        OnLost(failure.what());
        return;
    }
    if (m_Pending.size() > kMostPending) {
        m_Pending.clear();
        m_Screen.Tell("the port does not take what is typed; it is thrown away");
    }
}

void TerminalSession::OnCommand(TermKeys::Command command) {
    switch (command) {
    case TermKeys::Command::Quit:
        m_IsEnded = true;
        break;
    case TermKeys::Command::ToggleEcho:
        m_Screen.Tell(m_Screen.ToggleEcho() ? "local echo on" : "local echo off");
        break;
    case TermKeys::Command::ToggleHex:
        m_Screen.Tell(m_Screen.ToggleHex() ? "hexadecimal display on" : "hexadecimal display off");
        break;
    case TermKeys::Command::Break:
        SendBreak();
        break;
    case TermKeys::Command::Help:
        m_Screen.Tell(m_Keys.Help());
        break;
    }
}

void TerminalSession::SendBreak() {
    try {
        if (m_Port) {
            SetLine(m_Library, m_Port->Chosen().port.name, "break");
        }
    } catch (const Failure& failure) {
        m_Screen.Tell(failure.what());
    }
}
