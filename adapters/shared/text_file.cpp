// SPDX-License-Identifier: MIT
#include "adapters/shared/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/unique_fd.h"

namespace {

constexpr size_t kMaxFileSize = size_t{1024} * 1024;

TextFile Failure(int error) { return {"", ErrnoText(error), error == ENOENT || error == ENOTDIR}; }

// By what is read, not by the size that the system states: a file may grow meanwhile.
TextFile ReadAll(int file) {
    TextFile result;
    char buffer[8192];
    ssize_t count = 0;
    while ((count = read(file, buffer, sizeof buffer)) > 0) {
        result.text.append(buffer, static_cast<size_t>(count));
        if (result.text.size() > kMaxFileSize) {
            return {"", "larger than 1 MiB"};
        }
    }
    return count < 0 ? Failure(errno) : result;
}

} // namespace

// O_NONBLOCK: a name that turns out to be a FIFO must not hang the host.
TextFile ReadTextFile(const std::string& path) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen()) {
        return Failure(errno);
    }
    struct stat info {};
    if (fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return {"", "not a regular file"};
    }
    return ReadAll(file.Get());
}
