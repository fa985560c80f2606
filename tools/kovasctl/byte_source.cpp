// SPDX-License-Identifier: MIT
#include "tools/kovasctl/byte_source.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/waiting.h"

namespace {

constexpr size_t kPiece = 65536;

std::optional<uint64_t> RegularSize(int descriptor) {
    struct stat info {};
    if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    return static_cast<uint64_t>(info.st_size);
}

} // namespace

ByteSource ByteSource::OfText(std::string text) {
    ByteSource source;
    source.m_Size = text.size();
    source.m_Text = std::move(text);
    return source;
}

ByteSource ByteSource::OfStandardInput() {
    ByteSource source;
    source.m_File = UniqueFd(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    source.m_Name = "standard input";
    return source;
}

// Without waiting: opening a pipe that nobody writes to would.
ByteSource ByteSource::OfFile(const std::string& path) {
    ByteSource source;
    source.m_File = UniqueFd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!source.m_File.IsOpen()) {
        throw WrongUse(path + ": " + std::strerror(errno));
    }
    source.m_Name = path;
    source.m_Size = RegularSize(source.m_File.Get());
    return source;
}

std::string ByteSource::Next() {
    if (!m_File.IsOpen()) {
        return std::exchange(m_Text, std::string());
    }
    std::string bytes(kPiece, '\0');
    for (;;) {
        WaitForInput({m_File.Get()}, std::nullopt);
        const ssize_t count = read(m_File.Get(), bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.resize(static_cast<size_t>(count));
            return bytes;
        }
        if (errno != EAGAIN && errno != EINTR) {
            throw Failure(m_Name + ": " + std::strerror(errno));
        }
    }
}
