// SPDX-License-Identifier: MIT
//
// termios and poll, and nothing in between: the floor.
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <vector>

#include "bench/compare/pairs.h"

namespace {

class Plain : public PairSubject {
  public:
    Plain(size_t ports, Sink sink) : PairSubject(ports), m_Sink(sink) {
        for (size_t port = 0; port < ports; ++port) {
            m_Terminals.push_back(pollfd{Open(Name(port)), POLLIN, 0});
        }
    }
    ~Plain() override {
        for (const pollfd& terminal : m_Terminals) {
            close(terminal.fd);
        }
    }

    void Write(size_t port, const void* data, size_t length) override {
        if (write(m_Terminals[port].fd, data, length) != static_cast<ssize_t>(length)) {
            FailWithErrno("a write is short");
        }
    }

    void Run(const std::atomic<bool>& isEnding) override {
        while (!isEnding) {
            poll(m_Terminals.data(), m_Terminals.size(), -1);
            for (size_t port = 0; port < m_Terminals.size(); ++port) {
                if (m_Terminals[port].revents != 0) {
                    Deliver(port);
                }
            }
        }
    }

    // What the kernel lists, without looking into any of it.
    long Enumerate() override {
        long count = 0;
        DIR* const directory = opendir("/sys/class/tty");
        while (readdir(directory) != nullptr) {
            ++count;
        }
        closedir(directory);
        return count;
    }

  private:
    static int Open(const std::string& name) {
        const int terminal = open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        termios settings{};
        if (terminal < 0 || tcgetattr(terminal, &settings) != 0) {
            FailWithErrno(name);
        }
        cfmakeraw(&settings);
        tcsetattr(terminal, TCSANOW, &settings);
        return terminal;
    }

    void Deliver(size_t port) {
        char buffer[4096];
        const ssize_t count = read(m_Terminals[port].fd, buffer, sizeof buffer);
        if (count > 0) {
            m_Sink(port, buffer, static_cast<size_t>(count));
        }
    }

    const Sink m_Sink;
    std::vector<pollfd> m_Terminals;
};

} // namespace

std::unique_ptr<Subject> MakeSubject(size_t ports, Subject::Sink sink) {
    return std::make_unique<Plain>(ports, sink);
}
