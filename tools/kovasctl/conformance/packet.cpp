// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/packet.h"

#include <sys/socket.h>

#include <cerrno>

namespace {

constexpr size_t kMostBytes = 16384;

} // namespace

bool Send(int socket, const Packet& packet) {
    const std::string bytes =
        static_cast<char>(packet.kind) + packet.text.substr(0, kMostBytes - 1);
    ssize_t sent = 0;
    do {
        sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

std::optional<Packet> Receive(int socket) {
    char bytes[kMostBytes];
    ssize_t count = 0;
    // A side that ends with packets unread resets the connection, once; its last ones follow.
    do {
        count = recv(socket, bytes, sizeof bytes, 0);
    } while (count < 0 && (errno == EINTR || errno == ECONNRESET));
    if (count <= 0) {
        return std::nullopt;
    }
    return Packet{static_cast<Packet::Kind>(bytes[0]),
                  std::string(bytes + 1, static_cast<size_t>(count - 1))};
}
