// SPDX-License-Identifier: MIT
//
// kovasmgr-virtual: gives a command to the virtual devices of a running host.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "adapters/shared/unique_fd.h"
#include "adapters/virtual/control_place.h"
#include "adapters/virtual/control_words.h"

namespace {

namespace fs = std::filesystem;

constexpr int kReplyTimeMs = 15000;

enum ExitCode { kDone = 0, kRefused = 1, kNotReached = 2 };

constexpr const char* kUsage =
    "usage: kovasmgr-virtual [--pid PID | --dir DIRECTORY] COMMAND [NAME ...]\n"
    "commands:\n"
    "  list                 devices and ports, and where their far ends are\n"
    "  plug DEVICE          plug a device in\n"
    "  pull DEVICE          pull it out\n"
    "  replug DEVICE        pull it out and plug it in at once\n"
    "  switch DEVICE MODE   switch its mode\n"
    "  unplug-port PORT     take one port off its device\n"
    "  plug-port PORT       put it back\n"
    "  help                 the commands that the host knows\n"
    "Without an option: the directory in KOVASMGR_VIRTUAL_DIR, else the one host that runs.\n"
    "Exit status: 0 done, 1 refused, 2 no host reached.\n";

struct Arguments {
    std::string directory;
    std::vector<std::string> words;
    bool wantsHelp = false;
};

[[noreturn]] void Fail(const std::string& reason) { throw std::runtime_error(reason); }

// The control directories of the hosts that run.
std::vector<std::string> RunningHosts(const std::string& base) {
    std::vector<std::string> hosts;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(base, error)) {
        const std::string name = entry.path().filename().string();
        if (IsProcessId(name) && IsRunning(name) &&
            fs::exists(entry.path() / kControlSocket, error)) {
            hosts.push_back(entry.path().string());
        }
    }
    return hosts;
}

// Those of this login, or if there are none, those that were started without one.
std::vector<std::string> NearestHosts() {
    for (const std::string& base : ControlBases()) {
        std::vector<std::string> hosts = RunningHosts(base);
        if (!hosts.empty()) {
            return hosts;
        }
    }
    return {};
}

std::string FindHost(const std::string& processId) {
    for (const std::string& base : ControlBases()) {
        const fs::path directory = fs::path(base) / processId;
        if (fs::exists(directory / kControlSocket)) {
            return directory.string();
        }
    }
    Fail("process " + processId + " is no host with virtual devices");
}

Arguments ReadArguments(const std::vector<std::string>& given) {
    Arguments arguments;
    size_t at = 0;
    for (; at < given.size() && given[at].compare(0, 1, "-") == 0; at += 2) {
        arguments.wantsHelp = given[at] == "--help" || given[at] == "-h";
        if (arguments.wantsHelp) {
            return arguments;
        }
        const bool isPid = given[at] == "--pid";
        if ((!isPid && given[at] != "--dir") || at + 1 == given.size()) {
            Fail("bad option '" + given[at] + "'; --help explains");
        }
        if (isPid && !IsProcessId(given[at + 1])) {
            Fail("'" + given[at + 1] + "' is not a process identifier");
        }
        arguments.directory = isPid ? FindHost(given[at + 1]) : given[at + 1];
    }
    arguments.words.assign(given.begin() + static_cast<std::ptrdiff_t>(at), given.end());
    return arguments;
}

std::string FindOnlyHost() {
    const std::vector<std::string> hosts = NearestHosts();
    if (hosts.empty()) {
        Fail("no host with virtual devices runs (looked in " + ControlBases().front() + ")");
    }
    if (hosts.size() > 1) {
        std::string text = "several hosts run; choose one with --dir:";
        for (const std::string& host : hosts) {
            text += "\n  " + host;
        }
        Fail(text);
    }
    return hosts.front();
}

std::string FindDirectory() {
    const std::string chosen = ChosenControlDirectory();
    return chosen.empty() ? FindOnlyHost() : chosen;
}

UniqueFd Connect(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        Fail(path + ": the path is too long for a socket");
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    UniqueFd client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!client.IsOpen() ||
        connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        Fail(path + ": " + std::strerror(errno));
    }
    return client;
}

std::string CommandLine(const std::vector<std::string>& words) {
    std::string line = words.front();
    for (size_t i = 1; i < words.size(); ++i) {
        line += " " + QuoteWord(words[i]);
    }
    return line + "\n";
}

void SendAll(const UniqueFd& client, const std::string& text) {
    if (send(client.Get(), text.data(), text.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(text.size())) {
        Fail(std::string("cannot send: ") + std::strerror(errno));
    }
}

std::string ReceiveReply(const UniqueFd& client) {
    shutdown(client.Get(), SHUT_WR); // one command: the host closes after the reply
    std::string reply;
    char buffer[4096];
    pollfd entry{client.Get(), POLLIN, 0};
    while (poll(&entry, 1, kReplyTimeMs) > 0) {
        const ssize_t count = recv(client.Get(), buffer, sizeof buffer, 0);
        if (count <= 0) {
            return reply;
        }
        reply.append(buffer, static_cast<size_t>(count));
    }
    Fail("the host does not answer");
}

bool IsRefusal(const std::string& reply) {
    const size_t end = reply.find_last_not_of('\n');
    const size_t start = reply.rfind('\n', end);
    return reply.compare(start == std::string::npos ? 0 : start + 1, 2, "ok") != 0;
}

int Run(const std::vector<std::string>& given) {
    const Arguments arguments = ReadArguments(given);
    if (arguments.wantsHelp || arguments.words.empty()) {
        std::fputs(kUsage, arguments.wantsHelp ? stdout : stderr);
        return arguments.wantsHelp ? kDone : kNotReached;
    }
    const std::string directory =
        arguments.directory.empty() ? FindDirectory() : arguments.directory;
    const UniqueFd client = Connect(directory + "/" + kControlSocket);
    SendAll(client, CommandLine(arguments.words));
    const std::string reply = ReceiveReply(client);
    std::fputs(reply.c_str(), stdout);
    return IsRefusal(reply) ? kRefused : kDone;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kovasmgr-virtual: %s\n", error.what());
        return kNotReached;
    }
}
