// SPDX-License-Identifier: MIT
#include "tests/proof/failures/child_run.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <stdexcept>

namespace {

constexpr unsigned kBoundSeconds = 50;
constexpr char kReached = 'R';
constexpr char kNotReached = 'N';

void DropStandardOutput() {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

ChildReport ReportOf(const std::function<ChildReport()>& task) {
    try {
        return task();
    } catch (const std::exception& error) {
        return {true, std::string("ended by an exception: ") + error.what() + "\n"};
    }
}

// Leaves at once afterwards: what the parent has begun, tests for instance, is not ours to end.
[[noreturn]] void RunAndLeave(const std::function<ChildReport()>& task, int pipe) {
    alarm(kBoundSeconds);
    DropStandardOutput();
    const ChildReport report = ReportOf(task);
    const std::string message = (report.isReached ? kReached : kNotReached) + report.text;
    const bool isTold =
        write(pipe, message.data(), message.size()) == static_cast<ssize_t>(message.size());
    _exit(isTold ? 0 : 1);
}

std::string ReadAll(int pipe) {
    std::string text;
    char part[4096];
    for (ssize_t count = 0; (count = read(pipe, part, sizeof part)) > 0;) {
        text.append(part, static_cast<std::size_t>(count));
    }
    return text;
}

std::string EndOf(int status) {
    if (WIFSIGNALED(status)) {
        return "ended by signal " + std::to_string(WTERMSIG(status)) + "\n";
    }
    const int code = WEXITSTATUS(status);
    return code == 0 ? "" : "ended with status " + std::to_string(code) + "\n";
}

} // namespace

ChildRun::ChildRun(const std::function<ChildReport()>& task) : m_Process(-1), m_Pipe(-1) {
    int ends[2] = {-1, -1};
    std::fflush(stdout);
    if (pipe2(ends, O_CLOEXEC) != 0 || (m_Process = fork()) == -1) {
        throw std::runtime_error("no child process");
    }
    if (m_Process == 0) {
        RunAndLeave(task, ends[1]);
    }
    close(ends[1]);
    m_Pipe = ends[0];
}

ChildRun::ChildRun(ChildRun&& other) noexcept : m_Process(other.m_Process), m_Pipe(other.m_Pipe) {
    other.m_Process = -1;
    other.m_Pipe = -1;
}

ChildRun::~ChildRun() {
    if (m_Process != -1) {
        Wait();
    }
}

ChildReport ChildRun::Wait() {
    const std::string message = ReadAll(m_Pipe);
    close(m_Pipe);
    int status = 0;
    waitpid(m_Process, &status, 0);
    m_Process = -1;
    const bool isTold = !message.empty();
    return {!isTold || message[0] == kReached, (isTold ? message.substr(1) : "") + EndOf(status)};
}
