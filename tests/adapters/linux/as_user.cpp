// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/as_user.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace {

constexpr uid_t kNobody = 65534;

[[noreturn]] void RunAsUser(const std::function<std::string()>& body, int result) {
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
        _exit(1);
    }
    const std::string text = body();
    _exit(write(result, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
}

} // namespace

std::string AsUser(const std::function<std::string()>& body) {
    int pipes[2];
    if (pipe(pipes) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        RunAsUser(body, pipes[1]);
    }
    close(pipes[1]);
    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = read(pipes[0], buffer, sizeof buffer)) > 0) {
        text.append(buffer, static_cast<size_t>(count));
    }
    close(pipes[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? text : "the process ended with status " + std::to_string(status);
}
