// SPDX-License-Identifier: MIT
#include "adapters/spy/json_line.h"

namespace {

constexpr const char* kReplacement = "\xef\xbf\xbd"; // U+FFFD

// How long the character at the front is; 0: it is none. Neither overlong forms nor surrogates nor
// anything above U+10FFFF.
size_t CharacterLength(std::string_view text) {
    const auto byte = [&](size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto isNext = [&](size_t i, unsigned from = 0x80, unsigned to = 0xbf) {
        return byte(i) >= from && byte(i) <= to;
    };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xc2 && first <= 0xdf) {
        return isNext(1) ? 2 : 0;
    }
    if (first >= 0xe0 && first <= 0xef) {
        const bool isFit = isNext(1, first == 0xe0 ? 0xa0 : 0x80, first == 0xed ? 0x9f : 0xbf);
        return isFit && isNext(2) ? 3 : 0;
    }
    if (first >= 0xf0 && first <= 0xf4) {
        const bool isFit = isNext(1, first == 0xf0 ? 0x90 : 0x80, first == 0xf4 ? 0x8f : 0xbf);
        return isFit && isNext(2) && isNext(3) ? 4 : 0;
    }
    return 0;
}

std::string Escaped(char character) {
    constexpr const char* kDigits = "0123456789abcdef";
    switch (character) {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        break;
    }
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7f) {
        return std::string(1, character);
    }
    return std::string("\\u00") + kDigits[byte >> 4U] + kDigits[byte & 15U];
}

} // namespace

std::string JsonText(std::string_view text) {
    std::string json = "\"";
    while (!text.empty()) {
        const size_t length = CharacterLength(text);
        if (length == 1) {
            json += Escaped(text.front());
        } else {
            json += length == 0 ? kReplacement : std::string(text.substr(0, length));
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return json + '"';
}

std::string Base64(const void* data, size_t size) {
    constexpr const char* kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::string text;
    text.reserve((size + 2) / 3 * 4);
    for (size_t i = 0; i < size; i += 3) {
        const size_t rest = size - i;
        const unsigned group = (static_cast<unsigned>(bytes[i]) << 16U) |
                               (rest > 1 ? static_cast<unsigned>(bytes[i + 1]) << 8U : 0U) |
                               (rest > 2 ? static_cast<unsigned>(bytes[i + 2]) : 0U);
        text += kDigits[group >> 18U];
        text += kDigits[(group >> 12U) & 63U];
        text += rest > 1 ? kDigits[(group >> 6U) & 63U] : '=';
        text += rest > 2 ? kDigits[group & 63U] : '=';
    }
    return text;
}
