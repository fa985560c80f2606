// SPDX-License-Identifier: MIT
#include "tests/adapters/control_client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "tests/harness/wait_until.h"

ControlClient::ControlClient(const std::string& directory)
    : m_Socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = directory + "/control";
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    if (connect(m_Socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(m_Socket);
        throw std::runtime_error("no connection to " + path);
    }
}

ControlClient::~ControlClient() { close(m_Socket); }

std::string ControlClient::Ask(const std::string& line) {
    Send(line + "\n");
    return Reply();
}

void ControlClient::Send(const std::string& bytes) const {
    const ssize_t sent = send(m_Socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    (void)sent; // whoever is refused may be closed already
}

void ControlClient::EndInput() const { shutdown(m_Socket, SHUT_WR); }

std::string ControlClient::Reply(std::chrono::milliseconds bound) {
    size_t start = 0;
    while (true) {
        const size_t end = m_Received.find('\n', start);
        if (end == std::string::npos) {
            if (!Receive(bound)) {
                return m_Received;
            }
            continue;
        }
        const bool isLast =
            m_Received.compare(start, 2, "ok") == 0 || m_Received.compare(start, 5, "error") == 0;
        start = end + 1;
        if (isLast) {
            const std::string reply = m_Received.substr(0, end);
            m_Received.erase(0, start);
            return reply;
        }
    }
}

bool ControlClient::IsClosed() {
    while (Receive(std::chrono::seconds(10))) {
    }
    char byte = 0;
    return recv(m_Socket, &byte, 1, MSG_DONTWAIT) <= 0;
}

bool ControlClient::Receive(std::chrono::milliseconds bound) {
    pollfd entry{m_Socket, POLLIN, 0};
    char buffer[4096];
    if (poll(&entry, 1, static_cast<int>(bound.count())) <= 0) {
        return false;
    }
    const ssize_t count = recv(m_Socket, buffer, sizeof buffer, 0);
    m_Received.append(buffer, count > 0 ? static_cast<size_t>(count) : 0);
    return count > 0;
}
