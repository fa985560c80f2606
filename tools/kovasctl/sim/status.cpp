// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/status.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <sstream>

#include "tools/kovasctl/unique_fd.h"

namespace {

constexpr const char* kQuestion = "status\n";
constexpr const char* kSocket = "/control";

// Both for sending and for receiving.
void SetPatience(const UniqueFd& connection) {
    const timeval second{1, 0};
    setsockopt(connection.Get(), SOL_SOCKET, SO_RCVTIMEO, &second, sizeof second);
    setsockopt(connection.Get(), SOL_SOCKET, SO_SNDTIMEO, &second, sizeof second);
}

UniqueFd Connect(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    UniqueFd connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    SetPatience(connection);
    if (connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
        connection.Reset();
    }
    return connection;
}

// Everything up to the other side's end.
std::string Ask(const UniqueFd& connection) {
    send(connection.Get(), kQuestion, std::strlen(kQuestion), MSG_NOSIGNAL);
    shutdown(connection.Get(), SHUT_WR);
    std::string reply;
    char buffer[1024];
    ssize_t count = 0;
    while ((count = recv(connection.Get(), buffer, sizeof buffer, 0)) > 0) {
        reply.append(buffer, static_cast<size_t>(count));
    }
    return reply;
}

// Lines of a name and a value; further ones may come with later adapters.
std::optional<SimStatus> Understand(const std::string& reply) {
    SimStatus status;
    bool isComplete = false;
    std::istringstream lines(reply);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string name;
        std::string state;
        words >> name;
        if (name == "time") {
            words >> status.seconds;
        } else if (name == "speed") {
            words >> status.speed;
        } else if (name == "state") {
            words >> state;
            status.isPaused = state == "paused";
            status.hasEnded = state == "ended";
        }
        isComplete = name == "ok";
    }
    return isComplete ? std::optional(status) : std::nullopt;
}

} // namespace

bool CanBeAsked(const std::string& directory) {
    return (directory + kSocket).size() < sizeof(sockaddr_un::sun_path);
}

std::optional<SimStatus> AskSimulation(const std::string& directory) {
    const UniqueFd connection = CanBeAsked(directory) ? Connect(directory + kSocket) : UniqueFd();
    if (!connection.IsOpen()) {
        return std::nullopt;
    }
    return Understand(Ask(connection));
}
