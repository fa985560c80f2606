// SPDX-License-Identifier: MIT
#include "adapters/virtual/control/control_connection.h"

#include <sys/socket.h>

#include <cerrno>

namespace {

constexpr size_t kMaxLine = 1024;

// A host's callback may take its time; whoever gave the command is not kept for longer.
constexpr std::chrono::seconds kNoticeTime{5};

constexpr const char* kPending = "ok pending: the host has not finished its notice yet\n";

bool WouldBlock(int error) { return error == EAGAIN || error == EINTR; }

} // namespace

void ControlConnection::Watch(PollSet& waiting) {
    short events = m_Output.empty() ? 0 : POLLOUT;
    if (IsIdle() && !m_InputEnded) {
        events = POLLIN;
    }
    m_Place = waiting.Add(m_Socket.Get(), events);
    if (m_Notice) {
        waiting.WakeAt(m_Notice->giveUpAt);
    }
}

void ControlConnection::Serve(const PollSet& waited, Director& director, StateNotifier& notifier,
                              Instant now) {
    const short seen = m_Place ? waited.Seen(*m_Place) : short{0};
    // The client is gone altogether; what it ordered is done.
    m_Over = m_Over || ((seen & (POLLHUP | POLLERR)) != 0 && (seen & POLLIN) == 0);
    if (m_Over) {
        return;
    }
    if ((seen & POLLIN) != 0) {
        Receive(now);
    }
    do {
        FinishNotice(notifier, now);
        Send();
    } while (!m_Over && IsIdle() && RunNextLine(director, now));
    m_Over = m_Over || (m_InputEnded && IsIdle());
}

void ControlConnection::Receive(Instant now) {
    char buffer[kMaxLine];
    const ssize_t count = recv(m_Socket.Get(), buffer, sizeof buffer, MSG_DONTWAIT);
    if (count > 0) {
        m_Input.append(buffer, static_cast<size_t>(count));
        m_LastUsed = now;
    } else if (count == 0) {
        m_InputEnded = true;
    } else if (!WouldBlock(errno)) {
        m_Over = true;
    }
}

void ControlConnection::Send() {
    if (m_Output.empty()) {
        return;
    }
    // Without MSG_NOSIGNAL a client that went away would end the host by SIGPIPE.
    const ssize_t count =
        send(m_Socket.Get(), m_Output.data(), m_Output.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count >= 0) {
        m_Output.erase(0, static_cast<size_t>(count));
    } else if (!WouldBlock(errno)) {
        m_Over = true;
    }
}

void ControlConnection::FinishNotice(StateNotifier& notifier, Instant now) {
    if (!m_Notice) {
        return;
    }
    const bool isTold = notifier.IsTold(m_Notice->ticket);
    if (isTold || now >= m_Notice->giveUpAt) {
        m_Output += isTold ? m_Notice->text : kPending;
        m_Notice.reset();
    }
}

// @return whether there was a line.
bool ControlConnection::RunNextLine(Director& director, Instant now) {
    const size_t end = m_Input.find('\n');
    if (end == std::string::npos ? m_Input.size() > kMaxLine : end > kMaxLine) {
        m_Output = "error a line has at most 1024 bytes\n";
        m_Input.clear();
        m_InputEnded = true;
        return true;
    }
    // The end of the input ends the last line too.
    if (end == std::string::npos && (!m_InputEnded || m_Input.empty())) {
        return false;
    }
    std::string line = m_Input.substr(0, end);
    m_Input.erase(0, line.size() + 1);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    Reply reply = RunCommand(director, line);
    if (reply.ticket) {
        m_Notice = Notice{*reply.ticket, std::move(reply.text), now + kNoticeTime};
    } else {
        m_Output = std::move(reply.text);
    }
    return true;
}
