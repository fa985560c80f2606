// SPDX-License-Identifier: MIT
#include "adapters/virtual/control/control_words.h"

namespace {

bool IsBlank(char character) { return character == ' ' || character == '\t'; }

// Reads a word from its opening quote on; at is moved behind the closing one.
bool ReadQuoted(const std::string& line, size_t& at, std::string& word) {
    for (++at; at < line.size(); ++at) {
        if (line[at] == '"') {
            ++at;
            return true;
        }
        if (line[at] == '\\' && at + 1 < line.size()) {
            ++at;
        }
        word += line[at];
    }
    return false;
}

void ReadPlain(const std::string& line, size_t& at, std::string& word) {
    for (; at < line.size() && !IsBlank(line[at]); ++at) {
        word += line[at];
    }
}

} // namespace

std::optional<std::vector<std::string>> SplitWords(const std::string& line) {
    std::vector<std::string> words;
    size_t at = 0;
    while ((at = line.find_first_not_of(" \t", at)) != std::string::npos) {
        std::string word;
        if (line[at] != '"') {
            ReadPlain(line, at, word);
        } else if (!ReadQuoted(line, at, word)) {
            return std::nullopt;
        }
        words.push_back(word);
    }
    return words;
}

std::string QuoteWord(const std::string& word) {
    std::string quoted = "\"";
    for (const char character : word) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + "\"";
}
