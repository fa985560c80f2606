// SPDX-License-Identifier: MIT
#include "adapters/virtual/recording/recorded_data.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::optional<uint32_t> Digit(char character) {
    const char* found = character == '\0' ? nullptr : std::strchr(kDigits, character);
    return found == nullptr ? std::nullopt
                            : std::make_optional(static_cast<uint32_t>(found - kDigits));
}

// Two to four digits are one to three bytes.
bool AppendGroup(std::string& bytes, const char* group, size_t digits) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) {
        const auto digit = i < digits ? Digit(group[i]) : std::make_optional(uint32_t{0});
        if (!digit) {
            return false;
        }
        value = value << 6 | *digit;
    }
    for (size_t i = 0; i + 1 < digits; ++i) {
        bytes += static_cast<char>(value >> (16 - 8 * i) & 0xff);
    }
    return true;
}

} // namespace

std::optional<std::string> DecodeBase64(const std::string& text) {
    const size_t padding = text.size() - (text.find_last_not_of('=') + 1); // npos + 1 is 0
    if (text.size() % 4 != 0 || padding > 2) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (size_t at = 0; at < text.size(); at += 4) {
        const bool isLast = at + 4 == text.size();
        if (!AppendGroup(bytes, text.data() + at, isLast ? 4 - padding : 4)) {
            return std::nullopt;
        }
    }
    return bytes;
}
