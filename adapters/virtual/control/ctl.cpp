// SPDX-License-Identifier: MIT
//
// kovasmgr-virtual: gives a command to the virtual devices of a running host.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "adapters/shared/unique_fd.h"
#include "adapters/virtual/control/control_place.h"
#include "adapters/virtual/control/control_words.h"

namespace {

namespace fs = std::filesystem;

// For the whole of a command: reaching the host, telling it and having its answer.
constexpr std::chrono::seconds kTime{15};

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
    "  send, stall, resume, break, mend, fail, delay, shorten\n"
    "                       in the words of a scenario: fail write to PORT 2 times\n"
    "  pause, continue      stop the scenario's clock, set it going\n"
    "  status               the scenario's time, speed, seed and state\n"
    "  events               what has happened, as JSON lines\n"
    "  help                 the commands that the host knows\n"
    "Without an option: the directory in KOVASMGR_VIRTUAL_DIR, else the one host that runs.\n"
    "Exit status: 0 done, 1 refused by the host, 2 no answer from a host.\n";

struct Arguments {
    std::string directory;
    std::vector<std::string> words;
    bool wantsHelp = false;
};

[[noreturn]] void Fail(const std::string& reason) { throw std::runtime_error(reason); }

[[noreturn]] void FailHostGone() { Fail("the host went away"); }

class Deadline {
  public:
    /// Fails when no time is left.
    /// @return the time left, for poll
    int LeftMs() const {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_End - Clock::now());
        if (left.count() <= 0) {
            Fail("the host does not answer");
        }
        return static_cast<int>(left.count());
    }

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_End = Clock::now() + kTime;
};

bool WouldBlock(int error) { return error == EAGAIN || error == EINTR; }

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

// A line break would end the command, and what follows it would be another one.
void RefuseLineBreaks(const std::vector<std::string>& given) {
    for (const std::string& argument : given) {
        if (argument.find_first_of("\r\n") != std::string::npos) {
            Fail("an argument has a line break in it");
        }
    }
}

std::string DirectoryOfOption(const std::string& option, const std::string& value) {
    if (option == "--dir") {
        if (value.empty()) {
            Fail("--dir needs the name of a directory");
        }
        return value;
    }
    if (!IsProcessId(value)) {
        Fail("'" + value + "' is not a process identifier");
    }
    return FindHost(value);
}

Arguments ReadArguments(const std::vector<std::string>& given) {
    RefuseLineBreaks(given);
    Arguments arguments;
    size_t at = 0;
    for (; at < given.size() && given[at].compare(0, 1, "-") == 0; at += 2) {
        arguments.wantsHelp = given[at] == "--help" || given[at] == "-h";
        if (arguments.wantsHelp) {
            return arguments;
        }
        if ((given[at] != "--pid" && given[at] != "--dir") || at + 1 == given.size()) {
            Fail("bad option '" + given[at] + "'; --help explains");
        }
        if (!arguments.directory.empty()) {
            Fail("one of --pid and --dir is enough; --help explains");
        }
        arguments.directory = DirectoryOfOption(given[at], given[at + 1]);
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
        std::string text = "several hosts run; choose one with --pid or --dir:";
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

sockaddr_un MakeAddress(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        Fail(path + ": the path is too long for a socket");
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

// Whoever can put a socket where a host's is looked for must not learn or answer commands.
void RefuseStranger(const UniqueFd& client, const std::string& path) {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(client.Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        Fail(path + ": " + std::strerror(errno));
    }
    if (peer.uid != geteuid()) {
        Fail(path + ": the host belongs to another user (" + std::to_string(peer.uid) + ")");
    }
}

UniqueFd Connect(const std::string& path, const Deadline& deadline) {
    constexpr int kPauseMs = 20;
    const sockaddr_un address = MakeAddress(path);
    UniqueFd client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    while (!client.IsOpen() || connect(client.Get(), reinterpret_cast<const sockaddr*>(&address),
                                       sizeof address) != 0) {
        if (!client.IsOpen() || !WouldBlock(errno)) {
            Fail(path + ": " + std::strerror(errno));
        }
        // Too many clients wait already, and poll cannot tell when there is room.
        poll(nullptr, 0, std::min(kPauseMs, deadline.LeftMs()));
    }
    RefuseStranger(client, path);
    return client;
}

bool IsPlain(const std::string& word) {
    return !word.empty() && word.find_first_of(" \t\"") == std::string::npos;
}

// In the bytes to send, a backslash keeps the meaning that the host gives it.
std::string Quoted(const std::string& command, const std::string& word) {
    if (command != "send") {
        return QuoteWord(word);
    }
    const bool isInQuotes = word.size() > 1 && word.front() == '"' && word.back() == '"';
    return isInQuotes ? word : "\"" + word + "\"";
}

std::string CommandLine(const std::vector<std::string>& words) {
    if (words.front().empty()) {
        return "\n"; // no command, whatever follows
    }
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + (IsPlain(word) ? word : Quoted(words.front(), word));
    }
    return line + "\n";
}

void WaitFor(const UniqueFd& client, short events, const Deadline& deadline) {
    pollfd entry{client.Get(), events, 0};
    poll(&entry, 1, deadline.LeftMs());
}

// A failure is told by the reply: a host that refuses a line may close before it has read all of it.
void SendAll(const UniqueFd& client, const std::string& text, const Deadline& deadline) {
    for (size_t sent = 0; sent < text.size();) {
        WaitFor(client, POLLOUT, deadline);
        const ssize_t count =
            send(client.Get(), text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count >= 0) {
            sent += static_cast<size_t>(count);
        } else if (!WouldBlock(errno)) {
            break;
        }
    }
    shutdown(client.Get(), SHUT_WR); // one command: the host closes after the reply
}

std::string ReceiveAll(const UniqueFd& client, const Deadline& deadline) {
    std::string text;
    char buffer[4096];
    for (;;) {
        WaitFor(client, POLLIN, deadline);
        const ssize_t count = recv(client.Get(), buffer, sizeof buffer, 0);
        if (count == 0 || (count < 0 && !WouldBlock(errno))) {
            return text;
        }
        if (count > 0) {
            text.append(buffer, static_cast<size_t>(count));
        }
    }
}

// Whether a line is this word, alone or followed by others.
bool BeginsWith(const std::string& line, const std::string& word) {
    return line == word || line.compare(0, word.size() + 1, word + " ") == 0;
}

// The last line of a reply says how the command went; without it the reply is not complete.
ExitCode Outcome(const std::string& reply) {
    if (reply.empty() || reply.back() != '\n') {
        FailHostGone();
    }
    const size_t end = reply.size() - 1;
    const size_t start = end == 0 ? 0 : reply.rfind('\n', end - 1) + 1; // npos + 1 is 0
    const std::string last = reply.substr(start, end - start);
    if (!BeginsWith(last, "ok") && !BeginsWith(last, "error")) {
        FailHostGone();
    }
    return BeginsWith(last, "ok") ? kDone : kRefused;
}

// What others wrote must not move the cursor, set colours or the like.
void Print(FILE* stream, std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char byte) { return (byte < 0x20 && byte != '\n') || byte == 0x7f; }, '?');
    std::fwrite(text.data(), 1, text.size(), stream);
}

int Run(const std::vector<std::string>& given) {
    const Arguments arguments = ReadArguments(given);
    if (arguments.wantsHelp || arguments.words.empty()) {
        std::fputs(kUsage, arguments.wantsHelp ? stdout : stderr);
        return arguments.wantsHelp ? kDone : kNotReached;
    }
    const std::string directory =
        arguments.directory.empty() ? FindDirectory() : arguments.directory;
    const Deadline deadline;
    const UniqueFd client = Connect(directory + "/" + kControlSocket, deadline);
    SendAll(client, CommandLine(arguments.words), deadline);
    const std::string reply = ReceiveAll(client, deadline);
    const ExitCode outcome = Outcome(reply);
    Print(stdout, reply);
    return outcome;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        Print(stderr, std::string("kovasmgr-virtual: ") + error.what() + "\n");
        return kNotReached;
    }
}
