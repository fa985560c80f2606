// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/shell_command.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/kovasctl/conformance/file_text.h"
#include "tools/kovasctl/failure.h"

ShellCommand::ShellCommand(const std::string& text, const std::string& directory, pid_t host)
    : m_Output(memfd_create("command", MFD_CLOEXEC)), m_Process(fork()) {
    if (m_Process == 0) {
        Become(text, directory, host);
    }
    if (m_Process < 0) {
        throw ::Failure(std::string("no process to be had: ") + std::strerror(errno));
    }
    setpgid(m_Process, m_Process); // on both sides: whoever is first
}

ShellCommand::~ShellCommand() {
    if (!m_HasEnded) {
        kill(-m_Process, SIGKILL);
        while (waitpid(m_Process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

void ShellCommand::Become(const std::string& text, const std::string& directory, pid_t host) const {
    setpgid(0, 0);
    signal(SIGPIPE, SIG_DFL);
    dup2(m_Output.Get(), STDOUT_FILENO);
    dup2(m_Output.Get(), STDERR_FILENO);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    setenv("KOVASMGR_HOST_PID", std::to_string(host).c_str(), 1);
    if (chdir(directory.c_str()) == 0) {
        execl("/bin/sh", "sh", "-c", text.c_str(), nullptr);
    }
    _exit(127);
}

bool ShellCommand::HasEnded() {
    if (!m_HasEnded) {
        m_HasEnded = waitpid(m_Process, &m_Status, WNOHANG) == m_Process;
    }
    return m_HasEnded;
}

std::string ShellCommand::Failure() const {
    if (WIFEXITED(m_Status) && WEXITSTATUS(m_Status) == 0) {
        return "";
    }
    const std::string line = LastLine();
    return (WIFEXITED(m_Status) ? "status " + std::to_string(WEXITSTATUS(m_Status))
                                : std::string(strsignal(WTERMSIG(m_Status)))) +
           (line.empty() ? "" : ", " + line);
}

std::string ShellCommand::LastLine() const {
    std::string text = TextOfFile(m_Output.Get());
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    const size_t end = text.rfind('\n');
    return end == std::string::npos ? text : text.substr(end + 1);
}
