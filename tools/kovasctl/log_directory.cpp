// SPDX-License-Identifier: MIT
#include "tools/kovasctl/log_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/state_directory.h"
#include "tools/kovasctl/unique_fd.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kReasonTag = "ERRO:OSAdapt: ";

uint64_t SizeOf(const std::string& file) {
    std::error_code error;
    const uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

// Those above it as usual, itself for the owner alone.
std::string MakeDirectory(const std::string& given) {
    const fs::path normal = fs::absolute(given).lexically_normal();
    const fs::path path = normal.has_filename() ? normal : normal.parent_path();
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        throw WrongUse("--log-dir: " + path.string() + ": " + std::strerror(errno));
    }
    return path.string();
}

std::string Reason(const std::string& line) {
    const size_t tag = line.find(kReasonTag);
    return tag == std::string::npos ? "" : line.substr(tag + std::strlen(kReasonTag));
}

} // namespace

LogDirectory::LogDirectory(const std::string& given)
    : m_Path(given.empty() ? MakeStateDirectory() : MakeDirectory(given)), m_IsKept(!given.empty()),
      m_Start(Mark()) {
    if (!fs::is_directory(m_Path)) {
        throw WrongUse("--log-dir: " + m_Path + " is no directory");
    }
    const UniqueFd log(open(File().c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK,
                            S_IRUSR | S_IWUSR));
    if (log.Get() < 0) {
        throw WrongUse("--log-dir: " + File() + ": " + std::strerror(errno));
    }
}

LogDirectory::~LogDirectory() {
    if (!m_IsKept) {
        unlink(File().c_str());
        rmdir(m_Path.c_str());
    }
}

uint64_t LogDirectory::Mark() const { return SizeOf(File()); }

std::string LogDirectory::ReasonSince(uint64_t mark, const std::string& subject) const {
    const uint64_t end = Mark();
    uint64_t at = end < m_Start ? 0 : m_Start; // one that was too large has been started afresh
    const uint64_t from = mark > end ? at : mark;
    std::ifstream log(File());
    log.seekg(static_cast<std::streamoff>(at));
    std::string recent;
    std::string related;
    for (std::string line; std::getline(log, line); at += line.size() + 1) {
        const std::string reason = Reason(line);
        if (!reason.empty() && at >= from) {
            recent = reason;
        }
        if (!reason.empty() && !subject.empty() && reason.find(subject) != std::string::npos) {
            related = reason;
        }
    }
    return recent.empty() ? related : recent;
}
