// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/streams.h"
#include "tools/kovasctl/unique_fd.h"
#include "tools/kovasctl/waiting.h"

namespace {

constexpr int kLookEveryMs = 100;
constexpr double kPatienceInSeconds = 20;
constexpr int kPassedOn[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2};

/// Signals wait to be fetched from a descriptor, for as long as this lives.
class SignalQueue {
  public:
    SignalQueue() {
        sigset_t wanted;
        sigemptyset(&wanted);
        sigaddset(&wanted, SIGCHLD);
        for (const int number : kPassedOn) {
            sigaddset(&wanted, number);
        }
        signal(SIGCHLD, SIG_DFL); // ignored, it would take the child's status away
        pthread_sigmask(SIG_BLOCK, &wanted, &m_Before);
        m_Descriptor = UniqueFd(signalfd(-1, &wanted, SFD_CLOEXEC));
        if (!m_Descriptor.IsOpen()) {
            throw Failure(std::string("signals cannot be passed on: ") + std::strerror(errno));
        }
    }
    ~SignalQueue() { Restore(); }
    SignalQueue(const SignalQueue&) = delete;
    SignalQueue& operator=(const SignalQueue&) = delete;

    void Restore() { pthread_sigmask(SIG_SETMASK, &m_Before, nullptr); }

    /// @param timeMs  -1: without an end
    std::optional<signalfd_siginfo> Next(int timeMs) {
        signalfd_siginfo info{};
        pollfd entry{m_Descriptor.Get(), POLLIN, 0};
        if (poll(&entry, 1, timeMs) <= 0 || read(m_Descriptor.Get(), &info, sizeof info) < 0) {
            return std::nullopt;
        }
        return info;
    }

  private:
    sigset_t m_Before{};
    UniqueFd m_Descriptor;
};

// As a shell does it: what has a '/' is a path from where the person stands.
std::string ProgramPath(const std::string& program) {
    return program.find('/') == std::string::npos ? program
                                                  : std::filesystem::absolute(program).string();
}

// Between fork and exec.
[[noreturn]] void Become(const std::vector<char*>& words, const std::string& directory,
                         SignalQueue& signals, int report) {
    signal(SIGPIPE, SIG_DFL);
    signals.Restore();
    if (chdir(directory.c_str()) == 0 &&
        (DataDescriptor() < 0 || dup2(DataDescriptor(), STDOUT_FILENO) >= 0)) {
        execvp(words.front(), words.data());
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
    _exit(kFailed);
}

/// @param report  closed by a program that has been started; else tells why it has not
void ThrowIfNotStarted(int report, const std::string& program) {
    int error = 0;
    ssize_t count = 0;
    while ((count = read(report, &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (count == static_cast<ssize_t>(sizeof error)) {
        throw Failure(Printable(program) + " cannot be started: " + std::strerror(error));
    }
}

std::optional<int> StatusOf(pid_t process) {
    int status = 0;
    if (waitpid(process, &status, WNOHANG) != process) {
        return std::nullopt;
    }
    return WIFSIGNALED(status) ? kSignalBase + WTERMSIG(status) : WEXITSTATUS(status);
}

// The terminal has told the program already: it is in the same process group.
bool IsFromTerminal(const signalfd_siginfo& info) { return info.ssi_code == SI_KERNEL; }

/// Ends a program when it is time to.
class Ending {
  public:
    Ending(pid_t process, const std::function<bool()>& isOver)
        : m_Process(process), m_IsOver(isOver) {}

    int LookAgainInMs() const { return m_IsOver ? kLookEveryMs : -1; }

    void Look() {
        if (!m_IsOver) {
            return;
        }
        if (m_KillAt) {
            kill(m_Process, IsOver(m_KillAt) ? SIGKILL : 0);
        } else if (m_IsOver()) {
            kill(m_Process, SIGTERM);
            m_KillAt = After(kPatienceInSeconds);
        }
    }

    // An ordinary program has no handler, and has done as it was told.
    int Judge(int status) const {
        return m_KillAt && status == kSignalBase + SIGTERM ? kDone : status;
    }

  private:
    pid_t m_Process;
    const std::function<bool()>& m_IsOver;
    Deadline m_KillAt;
};

int WaitForEnd(pid_t process, SignalQueue& signals, Ending ending) {
    for (;;) {
        const std::optional<signalfd_siginfo> info = signals.Next(ending.LookAgainInMs());
        if (!info) {
            ending.Look();
        } else if (info->ssi_signo != SIGCHLD) {
            kill(process, IsFromTerminal(*info) ? 0 : static_cast<int>(info->ssi_signo));
        } else if (const std::optional<int> status = StatusOf(process)) {
            return ending.Judge(*status);
        }
    }
}

} // namespace

std::vector<char*> ArgumentPointers(std::vector<std::string>& words) {
    std::vector<char*> pointers(words.size() + 1, nullptr);
    std::transform(words.begin(), words.end(), pointers.begin(),
                   [](std::string& word) { return word.data(); });
    return pointers;
}

int RunProgram(const std::vector<std::string>& command, const std::string& directory,
               const std::function<bool()>& isOver) {
    std::vector<std::string> words = command;
    words.front() = ProgramPath(command.front());
    const std::vector<char*> pointers = ArgumentPointers(words);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw Failure(std::string("no pipe to be had: ") + std::strerror(errno));
    }
    const UniqueFd readEnd(ends[0]);
    UniqueFd writeEnd(ends[1]);
    SignalQueue signals;
    const pid_t process = fork();
    if (process == 0) {
        Become(pointers, directory, signals, writeEnd.Get());
    }
    if (process < 0) {
        throw Failure(std::string("no process to be had: ") + std::strerror(errno));
    }
    writeEnd.Reset();
    ThrowIfNotStarted(readEnd.Get(), command.front());
    return WaitForEnd(process, signals, Ending(process, isOver));
}
