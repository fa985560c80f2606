// SPDX-License-Identifier: MIT
#include "tests/adapters/watched_descriptors.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> NumbersOfSets() {
    std::vector<std::string> numbers;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code isGone; // as the directory being read is, afterwards
        if (fs::read_symlink(entry.path(), isGone) == "anon_inode:[eventpoll]") {
            numbers.push_back(entry.path().filename());
        }
    }
    return numbers;
}

} // namespace

std::size_t EpollSets() { return NumbersOfSets().size(); }

std::size_t WatchedDescriptors() {
    std::size_t count = 0;
    for (const std::string& number : NumbersOfSets()) {
        std::ifstream info("/proc/self/fdinfo/" + number);
        for (std::string line; std::getline(info, line);) {
            count += line.compare(0, 4, "tfd:") == 0 ? 1 : 0;
        }
    }
    return count;
}
