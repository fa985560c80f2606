// SPDX-License-Identifier: MIT
#include "tools/kovasctl/signals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "tools/kovasctl/failure.h"

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2};
constexpr int kCrashSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

int s_Pipe[2] = {-1, -1};
std::atomic<int> s_Signal{0};
std::atomic<const termios*> s_Terminal{nullptr};
static_assert(std::atomic<int>::is_always_lock_free, "used by a signal handler");
static_assert(std::atomic<const termios*>::is_always_lock_free, "used by a signal handler");

void RestoreTerminal() {
    const termios* settings = s_Terminal;
    if (settings != nullptr) {
        tcsetattr(STDIN_FILENO, TCSANOW, settings);
    }
}

void EndAtOnce(int number) {
    RestoreTerminal();
    _exit(kSignalBase + number);
}

// An adapter is a library of somebody else's, and runs in this process. The signal comes again when
// this returns, and ends the process as it would have.
void OnCrash(int number) {
    RestoreTerminal();
    raise(number);
}

// Async-signal-safe calls only.
void OnSignal(int number) {
    const int savedErrno = errno;
    if (s_Signal.exchange(number) != 0) {
        EndAtOnce(number);
    }
    [[maybe_unused]] const ssize_t written = write(s_Pipe[1], "", 1);
    errno = savedErrno;
}

void Handle(int number, void (*handler)(int), int flags = SA_RESTART) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(number, &action, nullptr);
}

// nohup and shells without job control start programs with signals ignored, and mean it.
bool IsIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

void CatchSignals() {
    if (pipe2(s_Pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw Failure("no pipe to be had for signals");
    }
    for (const int number : kEndingSignals) {
        if (!IsIgnored(number)) {
            Handle(number, OnSignal);
        }
    }
    for (const int number : kCrashSignals) {
        Handle(number, OnCrash, static_cast<int>(SA_RESETHAND));
    }
    Handle(SIGPIPE, SIG_IGN);
}

int SignalDescriptor() { return s_Pipe[0]; }

void ThrowIfInterrupted() {
    const int number = s_Signal;
    if (number != 0) {
        throw Interrupted{number};
    }
}

void SetTerminalToRestore(const termios* settings) { s_Terminal = settings; }
