// SPDX-License-Identifier: MIT
#include "tools/kovasctl/byte_text.h"

#include <cctype>
#include <cstring>

#include "tools/kovasctl/failure.h"

namespace {

constexpr const char* kDigits = "0123456789abcdef";
constexpr const char* kEscapeLetters = "rnt0e\\";
constexpr const char kEscapeValues[] = {'\r', '\n', '\t', '\0', '\x1b', '\\'};

// -1: not two hexadecimal digits.
int PairAt(const std::string& text, size_t at) {
    const auto value = [&](size_t i) {
        const int lower = i < text.size() ? std::tolower(static_cast<unsigned char>(text[i])) : 0;
        const char* digit = lower == 0 ? nullptr : std::strchr(kDigits, lower);
        return digit == nullptr ? -1 : static_cast<int>(digit - kDigits);
    };
    return value(at) < 0 || value(at + 1) < 0 ? -1 : value(at) * 16 + value(at + 1);
}

bool IsBetween(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0 || c == ':' || c == ',';
}

size_t SkipBetween(const std::string& text, size_t at) {
    while (at < text.size() && IsBetween(text[at])) {
        ++at;
    }
    const bool isPrefixed = text.compare(at, 2, "0x") == 0 || text.compare(at, 2, "0X") == 0;
    return isPrefixed && at + 2 < text.size() ? at + 2 : at;
}

/// @return where the escape ends
size_t AppendEscape(const std::string& text, size_t at, std::string& bytes) {
    const char letter = at + 1 < text.size() ? text[at + 1] : '\0';
    if (letter == 'x' && PairAt(text, at + 2) >= 0) {
        bytes += static_cast<char>(PairAt(text, at + 2));
        return at + 4;
    }
    const char* known = letter == '\0' ? nullptr : std::strchr(kEscapeLetters, letter);
    if (known == nullptr) {
        throw WrongUse("'" + text.substr(at, 2) + "' is no escape; there are \\r \\n \\t \\0 \\e " +
                       "\\xHH and \\\\");
    }
    bytes += kEscapeValues[known - kEscapeLetters];
    return at + 2;
}

} // namespace

std::string FromHex(const std::string& text) {
    std::string bytes;
    for (size_t at = SkipBetween(text, 0); at < text.size(); at = SkipBetween(text, at + 2)) {
        const int value = PairAt(text, at);
        if (value < 0) {
            throw WrongUse("'" + text.substr(at, 2) + "' is no byte in hexadecimal digits");
        }
        bytes += static_cast<char>(value);
    }
    return bytes;
}

std::string FromEscapes(const std::string& text) {
    std::string bytes;
    for (size_t at = 0; at < text.size();) {
        if (text[at] == '\\') {
            at = AppendEscape(text, at, bytes);
        } else {
            bytes += text[at++];
        }
    }
    return bytes;
}

std::string LineEnd(const std::string& name) {
    return name == "cr" ? "\r" : name == "lf" ? "\n" : name == "crlf" ? "\r\n" : "";
}

std::string ToHex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xfU];
        text += ' ';
    }
    return text;
}
