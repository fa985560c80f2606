// SPDX-License-Identifier: MIT
#include "adapters/virtual/control/control_server.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/control/control_place.h"

namespace {

constexpr size_t kMaxConnections = 16;
constexpr int kBacklog = 16;

// Without descriptors a waiting client cannot be accepted and stays visible: look away for a while.
constexpr std::chrono::seconds kAcceptPause{1};

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error("control socket '" + Printable(path) + "': " + reason);
}

void RefuseLongPath(const std::string& path) {
    if (path.size() >= sizeof(sockaddr_un::sun_path)) {
        Fail(path, "the path has " + std::to_string(path.size()) + " bytes, at most " +
                       std::to_string(sizeof(sockaddr_un::sun_path) - 1) +
                       " are possible; set KOVASMGR_VIRTUAL_DIR to a shorter one");
    }
}

sockaddr_un MakeAddress(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

UniqueFd Listen(const std::string& directory) {
    const std::string path = directory + "/" + kControlSocket;
    RefuseLongPath(path);
    const std::string deaf = directory + "/" + kDeafSocket; // the shorter one
    const sockaddr_un address = MakeAddress(deaf);
    UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener.IsOpen() ||
        bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener.Get(), kBacklog) != 0 || std::rename(deaf.c_str(), path.c_str()) != 0) {
        Fail(path, ErrnoText(errno));
    }
    return listener;
}

} // namespace

ControlServer::ControlServer(const std::string& directory) : m_Listener(Listen(directory)) {}

void ControlServer::Watch(PollSet& waiting) {
    m_Place.reset();
    if (m_AcceptAgainAt) {
        waiting.WakeAt(m_AcceptAgainAt);
    } else {
        m_Place = waiting.Add(m_Listener.Get(), POLLIN);
    }
    for (ControlConnection& connection : m_Connections) {
        connection.Watch(waiting);
    }
}

void ControlServer::Serve(const PollSet& waited, Director& director, StateNotifier& notifier) {
    const Instant now = std::chrono::steady_clock::now();
    for (ControlConnection& connection : m_Connections) {
        connection.Serve(waited, director, notifier, now);
    }
    m_Connections.remove_if([](const ControlConnection& it) { return it.IsOver(); });
    if (m_AcceptAgainAt && now >= *m_AcceptAgainAt) {
        m_AcceptAgainAt.reset();
    }
    if (m_Place && (waited.Seen(*m_Place) & POLLIN) != 0) {
        Accept(now);
    }
}

void ControlServer::Accept(Instant now) {
    UniqueFd client(accept4(m_Listener.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!client.IsOpen()) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            m_AcceptAgainAt = now + kAcceptPause;
        }
        return;
    }
    if (MakeRoom()) {
        m_Connections.emplace_back(std::move(client), now);
    }
}

// Idle clients must not keep others out: the one that has been silent for longest goes.
bool ControlServer::MakeRoom() {
    if (m_Connections.size() < kMaxConnections) {
        return true;
    }
    auto oldest = m_Connections.end();
    for (auto it = m_Connections.begin(); it != m_Connections.end(); ++it) {
        if (!it->IsWaitingForNotice() &&
            (oldest == m_Connections.end() || it->LastUsed() < oldest->LastUsed())) {
            oldest = it;
        }
    }
    if (oldest == m_Connections.end()) {
        return false;
    }
    m_Connections.erase(oldest);
    return true;
}
