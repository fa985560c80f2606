// SPDX-License-Identifier: MIT
#include "adapters/spy/output_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <utility>

#include "adapters/shared/adapter_log.h"

OutputFile::OutputFile(std::string path, std::string identity)
    : m_Path(std::move(path)), m_Identity(std::move(identity)) {}

// O_NONBLOCK: neither a FIFO without a reader nor a stopped terminal may hang the host.
bool OutputFile::Open() {
    if (IsOpen() || m_HasFailed) {
        return IsOpen();
    }
    m_File = UniqueFd(open(m_Path.c_str(),
                           O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600));
    const std::string trouble = m_File.IsOpen() ? Trouble() : ErrnoText(errno);
    if (!trouble.empty()) {
        return GiveUp(trouble);
    }
    m_IsBegun = m_IsRegular && BeginsWithIdentity();
    if (m_IsRegular && !m_IsBegun && ftruncate(m_File.Get(), 0) != 0) {
        return GiveUp(ErrnoText(errno));
    }
    return true;
}

// Of two hosts with the same variable, the second must not cut off what the first has written.
std::string OutputFile::Trouble() {
    struct stat info {};
    if (fstat(m_File.Get(), &info) != 0) {
        return ErrnoText(errno);
    }
    m_IsRegular = S_ISREG(info.st_mode);
    if (!m_IsRegular && !S_ISCHR(info.st_mode)) {
        return "it is not a regular file";
    }
    if (m_IsRegular && flock(m_File.Get(), LOCK_EX | LOCK_NB) != 0) {
        return "another host writes to it";
    }
    return "";
}

bool OutputFile::Append(std::string_view piece) {
    const off_t before = m_IsRegular ? lseek(m_File.Get(), 0, SEEK_END) : 0;
    ssize_t count = 0;
    do {
        count = write(m_File.Get(), piece.data(), piece.size());
    } while (count < 0 && errno == EINTR);
    if (count == static_cast<ssize_t>(piece.size())) {
        return true;
    }
    const int error = count < 0 ? errno : ENOSPC;
    if (count > 0 && m_IsRegular && ftruncate(m_File.Get(), before) != 0) {
        LogError("the end of '" + Printable(m_Path) + "' is not whole: " + ErrnoText(errno));
    }
    return GiveUp(ErrnoText(error));
}

std::string OutputFile::ReadAt(uint64_t place, size_t size) const {
    std::string bytes(size, '\0');
    const ssize_t count = pread(m_File.Get(), bytes.data(), size, static_cast<off_t>(place));
    bytes.resize(count < 0 ? 0 : static_cast<size_t>(count));
    return bytes;
}

void OutputFile::ReadAll(const std::function<void(std::string_view)>& take) const {
    constexpr size_t kPiece = size_t{64} * 1024;
    uint64_t place = 0;
    std::string piece;
    while (!(piece = ReadAt(place, kPiece)).empty()) {
        take(piece);
        place += piece.size();
    }
}

bool OutputFile::BeginsWithIdentity() const { return ReadAt(0, m_Identity.size()) == m_Identity; }

bool OutputFile::GiveUp(const std::string& reason) {
    m_File.Reset();
    m_HasFailed = true;
    LogError("nothing more is written to '" + Printable(m_Path) + "': " + reason);
    return false;
}

// The twentieth field behind the name, which may hold anything, is when the process began.
std::string ProcessIdentity() {
    constexpr int kFieldsBefore = 20;
    std::ifstream file("/proc/self/stat");
    std::string text;
    std::getline(file, text);
    size_t at = text.rfind(')');
    for (int i = 0; i < kFieldsBefore && at != std::string::npos; ++i) {
        at = text.find(' ', at + 1);
    }
    const std::string born =
        at == std::string::npos ? "0" : text.substr(at + 1, text.find(' ', at + 1) - at - 1);
    return std::to_string(getpid()) + "-" + born;
}
