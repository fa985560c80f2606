// SPDX-License-Identifier: MIT
#include "adapters/virtual/scenario.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cctype>
#include <cerrno>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/unique_fd.h"
#include "adapters/virtual/builtin_scenario.h"

namespace {

constexpr off_t kMaxFileSize = off_t{1024} * 1024;

struct FileText {
    std::string text;
    std::string error;
};

std::string ReadAll(int file) {
    std::string text;
    char buffer[8192];
    ssize_t count = 0;
    while ((count = read(file, buffer, sizeof buffer)) > 0 &&
           text.size() < static_cast<size_t>(kMaxFileSize)) {
        text.append(buffer, static_cast<size_t>(count));
    }
    return text;
}

// O_NONBLOCK: a name that turns out to be a FIFO must not hang the host.
FileText ReadFile(const std::string& path) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen()) {
        return {"", ErrnoText(errno)};
    }
    struct stat info {};
    if (fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return {"", "not a regular file"};
    }
    if (info.st_size > kMaxFileSize) {
        return {"", "larger than 1 MiB"};
    }
    return {ReadAll(file.Get()), ""};
}

} // namespace

ScenarioResult LoadScenario() {
    // Ignored in a process with raised privileges, as all variables here.
    const char* path = secure_getenv("KOVASMGR_VIRTUAL_SCENARIO");
    if (path == nullptr || *path == '\0') {
        return ReadScenario(kBuiltinScenario, "built-in scenario");
    }
    const FileText file = ReadFile(path);
    if (!file.error.empty()) {
        return {{}, std::string(path) + ":0: " + file.error};
    }
    return ReadScenario(file.text, path);
}

bool IsInMode(const PortSpec& port, const std::string& mode) {
    return port.mode.empty() || port.mode == mode;
}

std::string LinkName(const std::string& portName) {
    std::string name = portName;
    for (char& character : name) {
        const auto byte = static_cast<unsigned char>(character);
        const bool plain = byte < 0x80 && std::isalnum(byte) != 0;
        if (!plain && character != '.' && character != '-') {
            character = '_';
        }
    }
    if (!name.empty() && name.front() == '.') {
        name.front() = '_';
    }
    return name;
}
