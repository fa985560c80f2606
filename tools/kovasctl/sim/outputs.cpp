// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/outputs.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/streams.h"
#include "tools/kovasctl/unique_fd.h"

namespace {

namespace fs = std::filesystem;

std::string Absolute(const std::string& file) {
    return file.empty() ? "" : fs::absolute(file).lexically_normal().string();
}

bool IsSame(const std::string& left, const std::string& right) {
    std::error_code error;
    return !left.empty() && (left == right || fs::equivalent(left, right, error));
}

[[noreturn]] void Refuse(const char* option, const std::string& file, const std::string& reason) {
    throw WrongUse(std::string(option) + ": " + Printable(file) + ": " + reason);
}

// The lock is the one that a recording host holds: what it has written is not taken from it.
std::string TroubleWith(const UniqueFd& file) {
    struct stat info {};
    if (!file.IsOpen() || fstat(file.Get(), &info) != 0) {
        return std::strerror(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return "it is not a regular file";
    }
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        return "another host writes to it";
    }
    return ftruncate(file.Get(), 0) == 0 ? "" : std::strerror(errno);
}

// Whether its text has the file's name in it, as the recording that a port plays.
bool Names(const std::string& scenario, const std::string& file) {
    std::ifstream stream(scenario);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    return text.find('"' + fs::path(file).filename().string() + '"') != std::string::npos ||
           text.find('/' + fs::path(file).filename().string() + '"') != std::string::npos;
}

void Empty(const char* option, const std::string& file, const std::string& scenario) {
    if (file.empty()) {
        return;
    }
    if (IsSame(file, scenario)) {
        Refuse(option, file, "it is the scenario");
    }
    if (Names(scenario, file)) {
        Refuse(option, file, "the scenario plays it");
    }
    const UniqueFd opened(
        open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600));
    const std::string trouble = TroubleWith(opened);
    if (!trouble.empty()) {
        Refuse(option, file, trouble);
    }
}

// Events are written whole or not at all, by way of another file beside it.
void RefuseClosedPlace(const char* option, const std::string& file) {
    const std::string folder = fs::path(file).parent_path().string();
    if (!file.empty() && access(folder.c_str(), W_OK) != 0) {
        Refuse(option, file, "its directory: " + std::string(std::strerror(errno)));
    }
}

bool HasNothingIn(const std::string& file) {
    std::error_code error;
    const uintmax_t size = file.empty() ? 1 : fs::file_size(file, error);
    return error || size == 0;
}

} // namespace

SimOutputs::SimOutputs(const SimSettings& settings)
    : m_Events(Absolute(settings.events)), m_Recording(Absolute(settings.recording)) {
    if (IsSame(m_Events, m_Recording)) {
        Refuse("--recording", m_Recording, "the events go there");
    }
    RefuseClosedPlace("--events", m_Events);
    Empty("--events", m_Events, settings.scenario);
    Empty("--recording", m_Recording, settings.scenario);
}

int SimOutputs::Look(int status) const {
    const bool lacksEvents = HasNothingIn(m_Events);
    const bool lacksRecording = HasNothingIn(m_Recording);
    if (lacksEvents) {
        Message("no events in " + Printable(m_Events) +
                ": the host did not use the devices, or did not end in order");
    }
    if (lacksRecording) {
        Message("no recording in " + Printable(m_Recording) + ": the host did not use the devices");
    }
    return status == kDone && (lacksEvents || lacksRecording) ? kFailed : status;
}
