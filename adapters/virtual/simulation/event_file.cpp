// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/event_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/unique_fd.h"

namespace {

std::atomic<bool> g_HasWritten{false};

bool WriteAll(int file, const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return true;
}

// @return 0, or an errno value.
int WriteWhole(const std::string& path, const std::string& text) {
    const std::string unfinished = path + "." + std::to_string(getpid()) + ".tmp";
    unlink(unfinished.c_str());
    const UniqueFd file(
        open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (!file.IsOpen()) {
        return errno;
    }
    if (WriteAll(file.Get(), text) && std::rename(unfinished.c_str(), path.c_str()) == 0) {
        return 0;
    }
    const int error = errno;
    unlink(unfinished.c_str());
    return error;
}

} // namespace

void WriteEventFile(const EventLog& log) {
    const char* const path = secure_getenv("KOVASMGR_VIRTUAL_EVENTS");
    if (path == nullptr || *path == '\0' || (log.IsEmpty() && g_HasWritten)) {
        return;
    }
    if (*path != '/') {
        LogErrorOnce("KOVASMGR_VIRTUAL_EVENTS must be an absolute path, not '" + Printable(path) +
                     "'");
        return;
    }
    if (const int error = WriteWhole(path, log.Text()); error != 0) {
        LogErrorOnce("the events cannot be written to '" + Printable(path) +
                     "': " + ErrnoText(error));
        return;
    }
    g_HasWritten = true;
}
