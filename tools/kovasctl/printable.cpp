// SPDX-License-Identifier: MIT
#include "tools/kovasctl/printable.h"

#include <langinfo.h>
#include <wchar.h>

#include <cstdint>
#include <cstring>

namespace {

constexpr uint32_t kNone = UINT32_MAX;

struct Character {
    uint32_t value; // kNone: not UTF-8
    size_t length;
};

size_t LengthByFirst(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    return first >= 0xf0 && first < 0xf5   ? 4
           : first >= 0xe0 && first < 0xf0 ? 3
           : first >= 0xc2 && first < 0xe0 ? 2
                                           : 0;
}

bool IsOverlongOrSurrogate(uint32_t value, size_t length) {
    constexpr uint32_t kFirstOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
    return value < kFirstOfLength[length] || (value >= 0xd800 && value < 0xe000) ||
           value > 0x10ffff;
}

Character Decode(const std::string& text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const size_t length = LengthByFirst(byte(at));
    if (length == 0 || at + length > text.size()) {
        return {kNone, 1};
    }
    uint32_t value = length == 1 ? byte(at) : byte(at) & (0x7fU >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xc0U) != 0x80U) {
            return {kNone, 1};
        }
        value = (value << 6U) | (byte(at + i) & 0x3fU);
    }
    return IsOverlongOrSurrogate(value, length) ? Character{kNone, 1} : Character{value, length};
}

bool IsControl(uint32_t value) {
    const bool isDirectionMark =
        (value >= 0x202a && value <= 0x202e) || (value >= 0x2066 && value <= 0x2069);
    return value < 0x20 || (value >= 0x7f && value < 0xa0) || value == 0x2028 || value == 0x2029 ||
           isDirectionMark;
}

} // namespace

std::string Printable(const std::string& text) {
    std::string printable;
    for (size_t at = 0; at < text.size();) {
        const Character character = Decode(text, at);
        const bool isFit = character.value != kNone && !IsControl(character.value);
        printable += isFit ? text.substr(at, character.length) : "?";
        at += character.length;
    }
    return printable;
}

size_t ColumnsOf(const std::string& text) {
    size_t columns = 0;
    for (size_t at = 0; at < text.size();) {
        const Character character = Decode(text, at);
        const int width = wcwidth(static_cast<wchar_t>(character.value));
        columns += width < 0 ? 1 : static_cast<size_t>(width);
        at += character.length;
    }
    return columns;
}

std::string Padded(const std::string& text, size_t columns) {
    const size_t taken = ColumnsOf(text);
    return taken < columns ? text + std::string(columns - taken, ' ') : text;
}

bool IsUtf8Terminal() { return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0; }
