// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/resources.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "tools/kovasctl/conformance/timed.h"

namespace {

namespace fs = std::filesystem;

// A race detector starts a thread of its own beside the first one that is started.
std::map<int, std::string> Threads() {
    static const bool kHasStartedOne = (RunOnThread([] {}), true);
    std::map<int, std::string> threads;
    for (const auto& entry : fs::directory_iterator("/proc/self/task")) {
        std::ifstream file(entry.path() / "comm");
        std::string name;
        std::getline(file, name);
        if (kHasStartedOne && !name.empty()) {
            threads[std::stoi(entry.path().filename())] = name;
        }
    }
    return threads;
}

} // namespace

// The directory that is read is open itself, and refers to nothing afterwards.
std::map<int, std::string> Descriptors() {
    std::map<int, std::string> descriptors;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        descriptors[std::stoi(entry.path().filename())] = "";
    }
    for (auto entry = descriptors.begin(); entry != descriptors.end();) {
        std::error_code error;
        entry->second = fs::read_symlink("/proc/self/fd/" + std::to_string(entry->first), error);
        entry = error ? descriptors.erase(entry) : std::next(entry);
    }
    return descriptors;
}

Resources::Resources() : m_Threads(Threads()), m_Descriptors(Descriptors()) {}

std::string Resources::Excess() const {
    std::string text;
    for (const auto& [number, name] : Threads()) {
        if (m_Threads.count(number) == 0) {
            text += (text.empty() ? "thread '" : ", thread '") + name + "'";
        }
    }
    for (const auto& [number, target] : Descriptors()) {
        const auto known = m_Descriptors.find(number);
        if (known == m_Descriptors.end() || known->second != target) {
            text += (text.empty() ? "descriptor " : ", descriptor ") + std::to_string(number) +
                    " (" + target + ")";
        }
    }
    return text;
}
