// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/kernel_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

void WriteKernelFile(const std::string& path, const std::string& text) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    const ssize_t written = file < 0 ? -1 : write(file, text.data(), text.size());
    const int reason = errno;
    if (file >= 0) {
        close(file);
    }
    if (written != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error(path + ": " + std::strerror(reason));
    }
}

std::string ReadKernelFile(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}
