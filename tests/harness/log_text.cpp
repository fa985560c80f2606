// SPDX-License-Identifier: MIT
#include "tests/harness/log_text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace {

constexpr std::string_view kTime = "[0000-00-00 00:00:00:000]";

bool IsTime(std::string_view text) {
    return std::equal(text.begin(), text.end(), kTime.begin(), kTime.end(), [](char c, char shape) {
        return shape == '0' ? c >= '0' && c <= '9' : c == shape;
    });
}

} // namespace

std::string FileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot open " + path);
    }
    // As long as it is now: a file may grow faster than it is read.
    std::string text(std::filesystem::file_size(path), '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

std::string MaskTimes(const std::string& text) {
    std::string masked;
    std::size_t done = 0;
    for (auto at = text.find('['); at != std::string::npos; at = text.find('[', at + 1)) {
        if (IsTime(std::string_view(text).substr(at, kTime.size()))) {
            masked += text.substr(done, at - done) + "[TIME]";
            done = at + kTime.size();
        }
    }
    return masked + text.substr(done);
}

std::string LogText(const std::string& path) { return MaskTimes(FileText(path)); }

std::string LogText(const ScratchDirectory& scratch) { return LogText(scratch.LogFile()); }

int CountOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}
