// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/steering.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <stdexcept>

namespace {

constexpr int kAnswerMilliseconds = 45000;

int SteeringLine() {
    static const int line = open("/run/steering", O_RDWR | O_CLOEXEC);
    return line;
}

std::string Answer() {
    std::string answer;
    while (answer.empty() || answer.back() != '\n') {
        pollfd waiting{SteeringLine(), POLLIN, 0};
        char byte = 0;
        if (poll(&waiting, 1, kAnswerMilliseconds) != 1 || read(SteeringLine(), &byte, 1) != 1) {
            throw std::runtime_error("no answer");
        }
        answer += byte;
    }
    answer.pop_back();
    return answer;
}

} // namespace

void OpenSteering() {
    if (SteeringLine() < 0) {
        throw std::runtime_error("cannot open the line to the machine");
    }
}

void Ask(const std::string& request) {
    const std::string line = request + "\n";
    if (write(SteeringLine(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        throw std::runtime_error(request + ": not sent");
    }
    const std::string answer = Answer();
    if (answer != "ok") {
        throw std::runtime_error(request + ": " + answer);
    }
}
