// SPDX-License-Identifier: MIT
#include "adapters/shared/toml_text.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace {

constexpr size_t kMaxLine = 4096;

// The parser makes a table for each dot of "a.b.c" and recurses through them when it frees them.
// Dots that stand side by side, which no key can have, count as one.
constexpr long kMaxDots = 64;

long CountDots(std::string_view line) {
    long count = 0;
    char before = ' ';
    for (const char character : line) {
        count += character == '.' && before != '.' ? 1 : 0;
        before = character;
    }
    return count;
}

std::string LineMistake(std::string_view line) {
    if (line.size() > kMaxLine) {
        return "the line has more than " + std::to_string(kMaxLine) + " bytes";
    }
    if (CountDots(line) > kMaxDots) {
        return "the line has more than " + std::to_string(kMaxDots) + " dots";
    }
    return "";
}

[[noreturn]] void Fail(const std::string& fileName, long line, const std::string& reason) {
    throw std::runtime_error(fileName + ":" + std::to_string(line) + ": " + reason);
}

// Finds what the parser must not be given.
void CheckLines(std::string_view text, const std::string& fileName) {
    for (long number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find('\n'), text.size());
        if (const std::string reason = LineMistake(text.substr(0, end)); !reason.empty()) {
            Fail(fileName, number, reason);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

} // namespace

toml::table ParseToml(const std::string& text, const std::string& fileName) {
    CheckLines(text, fileName);
    try {
        return toml::parse(text);
    } catch (const toml::parse_error& error) {
        Mistake mistake;
        mistake.Note(error.source(), std::string(error.description()));
        throw std::runtime_error(mistake.Text(fileName));
    }
}
