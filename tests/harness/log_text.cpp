// SPDX-License-Identifier: MIT
#include "tests/harness/log_text.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

std::string FileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot open " + path);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string MaskTimes(const std::string& text) {
    static const std::regex kTime(
        R"(\[[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{3}\])");
    return std::regex_replace(text, kTime, "[TIME]");
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
