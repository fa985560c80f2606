// SPDX-License-Identifier: MIT
#include "adapters/shared/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/unique_fd.h"

namespace {

TextFile Failure(int error) { return {"", ErrnoText(error), error == ENOENT || error == ENOTDIR}; }

// By what is read, not by the size that the system states: a file may grow meanwhile.
TextFile ReadAll(int file, size_t maxBytes) {
    TextFile result;
    char buffer[8192];
    ssize_t count = 0;
    while ((count = read(file, buffer, sizeof buffer)) > 0) {
        result.text.append(buffer, static_cast<size_t>(count));
        if (result.text.size() > maxBytes) {
            return {"", TooLargeText(maxBytes)};
        }
    }
    return count < 0 ? Failure(errno) : result;
}

} // namespace

// O_NONBLOCK: a name that turns out to be a FIFO must not hang the host.
TextFile ReadTextFile(const std::string& path, size_t maxBytes) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen()) {
        return Failure(errno);
    }
    struct stat info {};
    if (fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return {"", "not a regular file"};
    }
    return ReadAll(file.Get(), maxBytes);
}

std::string TooLargeText(size_t maxBytes) {
    return "larger than " + std::to_string(maxBytes / kMebibyte) + " MiB";
}
